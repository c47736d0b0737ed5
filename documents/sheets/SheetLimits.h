#pragma once

#include <QtGlobal>

namespace wendrel::sheet {

// What an XLSX workbook holds at most; spreadsheet programs refuse anything beyond.
inline constexpr qint64 mostWorkbookRows = 1'048'576;
inline constexpr int mostWorkbookColumns = 16'384;
inline constexpr int longestWorkbookCell = 32'767;  // characters

// Delimited text has no limits of its own, but one field or one row must not fill memory: a
// quote that never closes would otherwise swallow the whole file into a single field.
inline constexpr qsizetype longestDelimitedField = 16 * 1024 * 1024;  // characters
inline constexpr qsizetype mostDelimitedFields = 1'048'576;           // in one row

// Cells a workbook reader passes on at most: far beyond any real table, yet it stops the few
// bytes of a repeated row from expanding without end.
inline constexpr qint64 mostReadCells = 1LL << 28;

// Rows between reports of progress and checks for cancellation.
inline constexpr int rowsPerBatch = 2048;

}  // namespace wendrel::sheet
