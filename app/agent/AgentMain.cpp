#include "AgentMain.h"

#include "AgentChannel.h"
#include "Appearance.h"
#include "Coordinator.h"
#include "app/cli/CommandLine.h"
#include "app/cli/ConsoleOutput.h"
#include "imaging/ImageFormat.h"

#include <QApplication>
#include <QThreadPool>

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
    // Which formats can be written is known from the cache, or probed after a library change:
    // found now, off the interface thread, so the first ring for a picture doesn't wait for it.
    QThreadPool::globalInstance()->start([] { canWrite(ImageFormat::jpeg); });
    return QApplication::exec();
}

}  // namespace wendrel
