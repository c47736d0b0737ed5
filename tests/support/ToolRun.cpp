#include "ToolRun.h"

#include <QFileInfo>
#include <QStandardPaths>
#include <QUrl>

#include <gtest/gtest.h>

namespace wendrel::test {

namespace {

ToolRun asText(const ToolOutcome& outcome, const QString& program, const QStringList& arguments)
{
    return {outcome.exitCode, QString::fromUtf8(outcome.out),
            outcome.finished ? QString::fromUtf8(outcome.err) : outcome.describe(program, arguments)};
}

}  // namespace

ToolRun runTool(const QString& program, const QStringList& arguments, const QString& workingDirectory,
                const QByteArray& input)
{
    return asText(runExternalTool(program, arguments, std::chrono::minutes(2), input, workingDirectory), program,
                  arguments);
}

QString toolOutput(const QString& program, const QStringList& arguments, const QByteArray& input)
{
    const ToolOutcome outcome = runExternalTool(program, arguments, std::chrono::minutes(2), input);
    if (!outcome.succeeded())
        ADD_FAILURE() << outcome.describe(program, arguments).toStdString();
    return QString::fromUtf8(outcome.out);
}

ToolRun runPython(const QString& script, const QStringList& arguments, const QString& workingDirectory)
{
    // The system's interpreter: a version manager's shims need the real home folder, which
    // the tests replace.
    const QString python = QFileInfo::exists(QStringLiteral("/usr/bin/python3")) ? QStringLiteral("/usr/bin/python3")
                                                                                 : QStringLiteral("python3");
    return runTool(python, QStringList{QStringLiteral("-c"), script} + arguments, workingDirectory);
}

bool toolExists(const QString& program) { return !QStandardPaths::findExecutable(program).isEmpty(); }

ToolRun runOffice(const QString& profile, const QStringList& arguments)
{
    const QStringList all = QStringList{QStringLiteral("-env:UserInstallation=") + QUrl::fromLocalFile(profile).toString(),
                                        QStringLiteral("--headless"), QStringLiteral("--norestore")}
                            + arguments;
    return asText(runExternalTool(QStringLiteral("soffice"), all, std::chrono::minutes(5)), QStringLiteral("soffice"), all);
}

}  // namespace wendrel::test
