#pragma once

#include "documents/sheets/SheetCell.h"

#include <QStringList>

#include <functional>

namespace wendrel::test {

struct ToolRun {
    int exitCode = -1;
    QString output;
    QString errors;
};

// Runs a Python 3 script with `arguments`; exit code -1 when Python isn't there or hangs.
ToolRun runPython(const QString& script, const QStringList& arguments);
bool hasPython();

// The rows a reader hands on, as the text a CSV would hold; "|" between cells, so a test
// can write a table as one line per row.
QStringList rowsAsText(const std::function<void(const std::function<void(const SheetRow&)>&)>& read);

// The message of the OperationError `action` throws, or "(no error)".
QString errorMessageOf(const std::function<void()>& action);

}  // namespace wendrel::test

namespace wendrel::test {

// Writes a ZIP package with Python's own zipfile: `parts` maps each part's name to its text,
// in order. A part whose text is "<zeros:N>" holds N zero bytes, deflated as it is written.
bool writeZipWithPython(const QString& path, const QList<std::pair<QString, QString>>& parts);

}  // namespace wendrel::test
