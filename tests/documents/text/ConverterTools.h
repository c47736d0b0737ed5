#pragma once

#include <QByteArray>
#include <QString>
#include <QStringList>

namespace wendrel::test {

// The independent programs that judge what the document formats write (pandoc, pdftotext,
// qpdf, soffice, …). A test skips when its program isn't installed.
bool toolExists(const QString& program);

// Runs a program to completion with `input` on its standard input and returns its standard
// output; a failure to start, a non-zero exit or a crash fails the calling test with the
// program's error output (and returns what was written).
QString runTool(const QString& program, const QStringList& arguments, const QByteArray& input = {});

struct ToolResult {
    int exitCode = -1;
    QString output;  // standard output and error together
};
ToolResult runToolForResult(const QString& program, const QStringList& arguments);

}  // namespace wendrel::test
