#include "cli/CommandLine.h"

#include <QCoreApplication>

int main(int argc, char* argv[])
{
    QCoreApplication application(argc, argv);
    QCoreApplication::setApplicationName(QStringLiteral("Wendrel"));
    QCoreApplication::setOrganizationName(QStringLiteral("Wendrel"));
    QCoreApplication::setApplicationVersion(QStringLiteral(WENDREL_VERSION));

    QStringList arguments = QCoreApplication::arguments();
    return wendrel::runCommandLine(arguments);
}
