#include "agent/AgentMain.h"
#include "cli/CommandLine.h"

#include <QCoreApplication>

#include <cstring>

int main(int argc, char* argv[])
{
    QCoreApplication::setApplicationName(QStringLiteral("Wendrel"));
    QCoreApplication::setOrganizationName(QStringLiteral("Wendrel"));
    QCoreApplication::setApplicationVersion(QStringLiteral(WENDREL_VERSION));

    // No command: the tray agent. "ring": a request for it. Anything else: the command line.
    if (argc == 1)
        return wendrel::runAgent(argc, argv);
    if (std::strcmp(argv[1], "ring") == 0)
        return wendrel::runRingCommand(argc, argv);

    QCoreApplication application(argc, argv);
    return wendrel::runCommandLine(QCoreApplication::arguments());
}
