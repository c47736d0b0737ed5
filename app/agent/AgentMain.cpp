#include "AgentMain.h"

#include "AgentChannel.h"
#include "Appearance.h"
#include "Coordinator.h"
#include "app/cli/CommandLine.h"
#include "app/cli/ConsoleOutput.h"

#include <QApplication>
#include <QDir>
#include <QFileInfo>
#include <QProcess>
#include <QThread>

namespace wendrel {

namespace {

bool haveDisplay()
{
    return !qEnvironmentVariableIsEmpty("DISPLAY") || !qEnvironmentVariableIsEmpty("WAYLAND_DISPLAY");
}

QString translate(const char* text) { return QCoreApplication::translate("Agent", text); }

}  // namespace

int runAgent(int& argc, char** argv)
{
    if (!haveDisplay()) {
        printError(translate("Wendrel's ring needs a graphical session (no DISPLAY or WAYLAND_DISPLAY is set). "
                             "The command line works anywhere: see 'wendrel --help'."));
        return exitUsage;
    }
    QApplication application(argc, argv);
    QApplication::setApplicationName(QStringLiteral("Wendrel"));
    QApplication::setQuitOnLastWindowClosed(false);
    QApplication::setWindowIcon(QIcon(QStringLiteral(":/wendrel/app/wendrel.svg")));
    applyAppearance();

    if (sendToAgent({}, 500))
        return exitSuccess;  // another agent runs; it has been asked to come forward
    Coordinator coordinator;
    if (!coordinator.start()) {
        printError(translate("Another Wendrel is starting; leaving it to run."));
        return exitSuccess;
    }
    return QApplication::exec();
}

int runRingCommand(int& argc, char** argv)
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

    // No agent yet: start one and hand it the request once it listens.
    if (!haveDisplay()) {
        printError(translate("No Wendrel is running and there is no graphical session to start one in."));
        return exitJobFailed;
    }
    if (!QProcess::startDetached(QCoreApplication::applicationFilePath(), {})) {
        printError(translate("Couldn't start Wendrel."));
        return exitJobFailed;
    }
    for (int attempt = 0; attempt < 50; ++attempt) {
        QThread::msleep(100);
        if (sendToAgent(request, 500))
            return exitSuccess;
    }
    printError(translate("Wendrel started but did not answer."));
    return exitJobFailed;
}

}  // namespace wendrel
