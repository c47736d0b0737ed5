#pragma once

#include "documents/sheets/SheetConversion.h"

namespace wendrel::fuzz {

// Converts `source` (read as `from`) to CSV and to XLSX, as the convert entries do, so the
// writers meet whatever the reader makes of odd input. Reading may fail with an OperationError;
// a workbook we wrote must then read back with our own reader, or the run fails.
void convertEveryWay(const QString& source, SheetFormat from);

}  // namespace wendrel::fuzz
