#pragma once

#include "support/ExternalTool.h"

#include <QByteArray>
#include <QString>
#include <QStringList>

// Text-minded shorthands over runExternalTool for the tests that read what a program prints
// (unzip, 7z, python3, pandoc, pdftotext, soffice, ffprobe, …).
namespace wendrel::test {

struct ToolRun {
    int exitCode = -1;  // -1 when the program couldn't start, crashed or hung
    QString output;     // standard output
    QString errors;     // standard error, or why the program didn't run to its end
};

ToolRun runTool(const QString& program, const QStringList& arguments, const QString& workingDirectory = {},
                const QByteArray& input = {});

// A program's standard output; a failure to start, a non-zero exit or a crash fails the
// calling test with the program's error output.
QString toolOutput(const QString& program, const QStringList& arguments, const QByteArray& input = {});

// Runs a Python 3 script with sys.argv[1:] = arguments.
ToolRun runPython(const QString& script, const QStringList& arguments = {}, const QString& workingDirectory = {});

bool toolExists(const QString& program);

// The headless office suite with a profile of its own in `profile`, so it neither meets a
// running office nor leaves settings behind; its first start in a fresh profile is slow.
ToolRun runOffice(const QString& profile, const QStringList& arguments);

}  // namespace wendrel::test
