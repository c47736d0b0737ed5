#include "AgentLaunch.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <fcntl.h>
#include <unistd.h>

namespace wendrel {

QString agentLogPath()
{
    QString stateHome = qEnvironmentVariable("XDG_STATE_HOME");
    if (!QDir::isAbsolutePath(stateHome))  // an unset or relative value counts as unset
        stateHome = QDir::homePath() + QStringLiteral("/.local/state");
    return stateHome + QStringLiteral("/wendrel/agent.log");
}

std::optional<pid_t> startDetachedAgent(const QString& program, const QString& logPath)
{
    QDir().mkpath(QFileInfo(logPath).path());
    const QByteArray programPath = QFile::encodeName(program);
    // Opened before the fork: between fork and exec only async-signal-safe calls are allowed.
    const int input = ::open("/dev/null", O_RDONLY | O_CLOEXEC);
    int output = ::open(QFile::encodeName(logPath).constData(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0600);
    if (output < 0)  // no log then, but still nothing in the caller's terminal
        output = ::open("/dev/null", O_WRONLY | O_CLOEXEC);
    if (input < 0 || output < 0) {
        if (input >= 0)
            ::close(input);
        return std::nullopt;
    }

    const pid_t child = ::fork();
    if (child == 0) {
        ::setsid();
        // dup2 clears close-on-exec on the copies, so exactly these three reach the agent.
        if (::dup2(input, STDIN_FILENO) < 0 || ::dup2(output, STDOUT_FILENO) < 0 || ::dup2(output, STDERR_FILENO) < 0)
            ::_exit(127);
        char* const arguments[] = {const_cast<char*>(programPath.constData()), nullptr};
        ::execv(programPath.constData(), arguments);
        ::_exit(127);
    }
    ::close(input);
    ::close(output);
    if (child < 0)
        return std::nullopt;
    return child;
}

}  // namespace wendrel
