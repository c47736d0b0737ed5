#pragma once

#include "WorkbookReading.h"

namespace wendrel {

enum class SheetFormat { csv, tsv, xlsx, ods };

// The format a file is read as, from its content type; nothing for other files.
std::optional<SheetFormat> sheetFormatOf(const QString& path);

// Reads `source` (of `from`, which may be any of them) and writes its first sheet to
// `destination` as `to` (csv, tsv or xlsx), row by row: memory holds a row at a time, plus an
// XLSX's table of strings. `scratchFolder` takes the parts in between. Values keep their types
// between typed formats; a delimited source read for a delimited result keeps every field's
// text as it was. Throws OperationError (see the readers and writers).
WorkbookSummary convertSheet(const QString& source, SheetFormat from, const QString& destination, SheetFormat to,
                             const QString& scratchFolder, const SheetProgress& progress);

}  // namespace wendrel
