#include "ConverterTools.h"

#include <QProcess>
#include <QStandardPaths>

#include <gtest/gtest.h>

namespace wendrel::test {

namespace {

// Long enough for a cold start of the office suite on a busy machine; only a hung program
// ever waits this long.
constexpr int toolTimeoutMs = 240'000;

}  // namespace

bool toolExists(const QString& program)
{
    return !QStandardPaths::findExecutable(program).isEmpty();
}

QString runTool(const QString& program, const QStringList& arguments, const QByteArray& input)
{
    QProcess process;
    process.start(program, arguments);
    if (!process.waitForStarted()) {
        ADD_FAILURE() << program.toStdString() << " didn't start";
        return {};
    }
    process.write(input);
    process.closeWriteChannel();
    if (!process.waitForFinished(toolTimeoutMs)) {
        process.kill();
        process.waitForFinished();
        ADD_FAILURE() << program.toStdString() << " didn't finish";
    } else if (process.exitStatus() != QProcess::NormalExit || process.exitCode() != 0) {
        ADD_FAILURE() << program.toStdString() << " " << arguments.join(u' ').toStdString() << " failed: "
                      << process.readAllStandardError().toStdString();
    }
    return QString::fromUtf8(process.readAllStandardOutput());
}

ToolResult runToolForResult(const QString& program, const QStringList& arguments)
{
    QProcess process;
    process.setProcessChannelMode(QProcess::MergedChannels);
    process.start(program, arguments);
    if (!process.waitForStarted())
        return {};
    if (!process.waitForFinished(toolTimeoutMs)) {
        process.kill();
        process.waitForFinished();
        return {};
    }
    return {process.exitStatus() == QProcess::NormalExit ? process.exitCode() : -1,
            QString::fromUtf8(process.readAll())};
}

}  // namespace wendrel::test
