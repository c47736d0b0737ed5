#include "CommandLine.h"
#include "LayerModules.h"
#include "documents/DocumentOperations.h"
#include "app/front/ApplicationIdentity.h"
#include "operations/OperationCatalog.h"

#include <QCoreApplication>
#include <QGuiApplication>
#include <QLoggingCategory>

// The command line's entry point, which the `wendrel` executable looks up when it loads this module.
extern "C" __attribute__((visibility("default"))) int wendrel_command_line_main(int argc, char** argv)
{
    wendrel::setApplicationIdentity();
    // Quiet unless asked otherwise, from the start: registering the entries may log already.
    QLoggingCategory::setFilterRules(QStringLiteral("wendrel.*.info=false"));
    QStringList arguments;
    for (int i = 0; i < argc; ++i)
        arguments.append(QString::fromLocal8Bit(argv[i]));

    // Documents, archives and subtitles first; images and PDFs, audio and video only when the
    // command needs them.
    wendrel::OperationCatalog catalog;
    wendrel::registerDocumentOperations(catalog);
    wendrel::addLayerOperationsFor(arguments, catalog);
    // Qt's fonts come only with a QGuiApplication; the offscreen platform gives one without a
    // display. Only runs of entries that lay out text pay for it: every other command starts
    // with the lighter core.
    if (wendrel::mayRunTextDrawingEntry(arguments, catalog)) {
        qputenv("QT_QPA_PLATFORM", "offscreen");
        QGuiApplication application(argc, argv);
        return wendrel::runCommandLine(QCoreApplication::arguments(), catalog);
    }
    QCoreApplication application(argc, argv);
    return wendrel::runCommandLine(QCoreApplication::arguments(), catalog);
}
