#include "CommandLine.h"
#include "app/front/ApplicationIdentity.h"

#include <QCoreApplication>
#include <QGuiApplication>

#include <cstring>

// The command line's entry point, which the `wendrel` executable looks up when it loads this module.
extern "C" __attribute__((visibility("default"))) int wendrel_command_line_main(int argc, char** argv)
{
    wendrel::setApplicationIdentity();
    // Running entries may draw text (page numbers, watermarks), and Qt's fonts come only with a
    // QGuiApplication; the offscreen platform gives one without a display, whatever platform
    // the environment names. Listing and help stay with the lighter core.
    if (argc >= 2 && std::strcmp(argv[1], "run") == 0) {
        qputenv("QT_QPA_PLATFORM", "offscreen");
        QGuiApplication application(argc, argv);
        return wendrel::runCommandLine(QCoreApplication::arguments());
    }
    QCoreApplication application(argc, argv);
    return wendrel::runCommandLine(QCoreApplication::arguments());
}
