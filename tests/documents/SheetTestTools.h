#pragma once

#include "documents/sheets/SheetCell.h"
#include "support/ToolRun.h"

#include <QStringList>

#include <functional>

namespace wendrel::test {

// The rows a reader hands on, as the text a CSV would hold; "|" between cells, so a test
// can write a table as one line per row.
QStringList rowsAsText(const std::function<void(const std::function<void(const SheetRow&)>&)>& read);

// The message of the OperationError `action` throws, or "(no error)".
QString errorMessageOf(const std::function<void()>& action);

// Every cell of an XLSX's first sheet as Python's zipfile and ElementTree read it, one JSON
// line each: reference, type, the number format its style shows it with, and its value (shared
// strings looked up); the first line gives the shared strings' counts.
QStringList xlsxCellsByPython(const QString& path);

// Writes a ZIP package with Python's own zipfile: `parts` maps each part's name to its text,
// in order. A part whose text is "<zeros:N>" holds N zero bytes, deflated as it is written.
bool writeZipWithPython(const QString& path, const QList<std::pair<QString, QString>>& parts);

}  // namespace wendrel::test
