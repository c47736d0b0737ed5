#include "CommandLine.h"
#include "app/front/ApplicationIdentity.h"

#include <QCoreApplication>
#include <QGuiApplication>

#include <algorithm>
#include <cstring>

// The command line's entry point, which the `wendrel` executable looks up when it loads this module.
extern "C" __attribute__((visibility("default"))) int wendrel_command_line_main(int argc, char** argv)
{
    wendrel::setApplicationIdentity();
    // Running entries may draw text (page numbers, watermarks), and Qt's fonts come only with a
    // QGuiApplication; the offscreen platform gives one without a display, whatever platform
    // the environment names. Listing and help stay with the lighter core. Options may come
    // before the command, so any argument "run" counts: at worst a file named so costs a few
    // milliseconds.
    const bool mayRun = std::any_of(argv + 1, argv + argc, [](const char* argument) {
        return std::strcmp(argument, "run") == 0;
    });
    if (mayRun) {
        qputenv("QT_QPA_PLATFORM", "offscreen");
        QGuiApplication application(argc, argv);
        return wendrel::runCommandLine(QCoreApplication::arguments());
    }
    QCoreApplication application(argc, argv);
    return wendrel::runCommandLine(QCoreApplication::arguments());
}
