#include "CommandLine.h"
#include "app/front/ApplicationIdentity.h"

#include <QCoreApplication>

// The command line's entry point, which the `wendrel` executable looks up when it loads this module.
extern "C" __attribute__((visibility("default"))) int wendrel_command_line_main(int argc, char** argv)
{
    wendrel::setApplicationIdentity();
    QCoreApplication application(argc, argv);
    return wendrel::runCommandLine(QCoreApplication::arguments());
}
