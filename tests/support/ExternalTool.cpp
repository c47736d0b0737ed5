#include "ExternalTool.h"

#include <QProcess>

namespace wendrel::test {

QString ToolOutcome::describe(const QString& program, const QStringList& arguments) const
{
    const QString what = program + u' ' + arguments.join(u' ');
    if (!started)
        return what + QStringLiteral(": could not be started");
    if (!finished)
        return what + QStringLiteral(": did not finish in time");
    return what + QStringLiteral(": exit %1: ").arg(exitCode) + QString::fromUtf8(err).trimmed();
}

ToolOutcome runExternalTool(const QString& program, const QStringList& arguments,
                            std::chrono::milliseconds deadline, const QByteArray& input,
                            const QString& workingDirectory)
{
    ToolOutcome outcome;
    QProcess process;
    if (!workingDirectory.isEmpty())
        process.setWorkingDirectory(workingDirectory);
    process.start(program, arguments);
    outcome.started = process.waitForStarted();
    if (!outcome.started)
        return outcome;
    process.write(input);
    process.closeWriteChannel();
    outcome.finished = process.waitForFinished(int(deadline.count()));
    if (!outcome.finished) {
        process.kill();
        process.waitForFinished();
    } else if (process.exitStatus() == QProcess::NormalExit) {
        outcome.exitCode = process.exitCode();
    }
    outcome.out = process.readAllStandardOutput();
    outcome.err = process.readAllStandardError();
    return outcome;
}

}  // namespace wendrel::test
