#include "RingCommand.h"

#include "AgentClient.h"
#include "AgentLaunch.h"
#include "app/cli/CommandLine.h"
#include "app/cli/ConsoleOutput.h"

#include <QCoreApplication>
#include <QDeadlineTimer>
#include <QDir>
#include <QFileInfo>
#include <QThread>

#include <sys/wait.h>

namespace wendrel {

namespace {

QString translate(const char* text) { return QCoreApplication::translate("Agent", text); }

bool haveDisplay()
{
    return !qEnvironmentVariableIsEmpty("DISPLAY") || !qEnvironmentVariableIsEmpty("WAYLAND_DISPLAY");
}

// Starts an agent and hands it the request once it listens.
int startAgentFor(const AgentRequest& request)
{
    if (!haveDisplay()) {
        printError(translate("No Wendrel is running and there is no graphical session to start one in."));
        return exitJobFailed;
    }
    const QString log = agentLogPath();
    const std::optional<pid_t> agent = startDetachedAgent(QCoreApplication::applicationFilePath(), log);
    if (!agent) {
        printError(translate("Couldn't start Wendrel."));
        return exitJobFailed;
    }
    // A busy machine may need a while to bring a desktop program up; an agent that ends
    // meanwhile has said why in its log.
    const QDeadlineTimer deadline(20'000);
    while (!deadline.hasExpired()) {
        if (sendToAgent(request, 500))
            return exitSuccess;
        int status = 0;
        if (::waitpid(*agent, &status, WNOHANG) == *agent) {
            // It ended: another agent won the race to the socket, or it failed.
            if (sendToAgent(request, 500))
                return exitSuccess;
            printError(translate("Wendrel stopped while starting; see %1").arg(log));
            return exitJobFailed;
        }
        QThread::msleep(50);
    }
    printError(translate("Wendrel started but did not answer; see %1").arg(log));
    return exitJobFailed;
}

}  // namespace

int runRingCommand(int argc, char** argv)
{
    QCoreApplication application(argc, argv);
    const QStringList arguments = QCoreApplication::arguments().mid(2);
    const std::optional<RingKind> kind = ringKindFromRawValue(arguments.value(0));
    if (!kind || arguments.size() < 2) {
        printError(translate("Usage: wendrel ring convert|tools|actions FILE..."));
        return exitUsage;
    }
    AgentRequest request;
    request.command = AgentRequest::Command::ring;
    request.ring = *kind;
    for (const QString& file : arguments.mid(1)) {
        const QFileInfo info(file);
        if (!info.exists()) {
            printError(translate("%1: No such file or directory").arg(file));
            return exitUsage;
        }
        request.files.append(QDir::cleanPath(info.absoluteFilePath()));
    }
    if (sendToAgent(request))
        return exitSuccess;
    return startAgentFor(request);
}

}  // namespace wendrel
