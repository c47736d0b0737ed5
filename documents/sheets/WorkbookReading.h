#pragma once

#include "SheetReading.h"

namespace wendrel {

// What a workbook reader reports beside the rows of its first sheet.
struct WorkbookSummary {
    int sheets = 1;  // how many the workbook has; only the first is read
};

// Reads the first sheet of an XLSX workbook: values as their types say (numbers shown as dates
// by their number format become dates, in the workbook's 1900 or 1904 date system; formulas
// give the value last calculated), rows and cells in their places, gaps as empty cells and
// rows. Trailing empty cells and rows, which formatting alone leaves, are left out.
// The sheet's XML is unpacked into `scratchFolder` and read in pieces; only the shared strings
// are held. Throws sheet::unreadableTable() for anything that isn't a readable workbook.
WorkbookSummary readXlsx(const QString& path, const QString& scratchFolder, const SheetRowSink& sink,
                         const SheetProgress& progress);

// Reads the first table of an OpenDocument spreadsheet the same way: repeated rows and cells
// as many times as they say (empty ones only counted, never laid out), paragraphs of a cell
// joined with line breaks.
WorkbookSummary readOds(const QString& path, const QString& scratchFolder, const SheetRowSink& sink,
                        const SheetProgress& progress);

}  // namespace wendrel
