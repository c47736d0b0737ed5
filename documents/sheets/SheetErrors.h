#pragma once

#include "operations/OperationError.h"

namespace wendrel::sheet {

// The one sentence for any input no reader can make a table of: damaged, truncated, hostile
// or simply something else under a table's name. The reason, when given, goes to the log
// rather than to the user.
OperationError unreadableTable(const QString& reason = {});

// Delimited text in an encoding other than UTF-8 (or UTF-16 with its byte-order mark).
OperationError notUtf8Table();

// A table beyond what an XLSX workbook holds.
OperationError tooManyRowsForWorkbook();
OperationError tooManyColumnsForWorkbook();
OperationError cellTooLongForWorkbook();

}  // namespace wendrel::sheet
