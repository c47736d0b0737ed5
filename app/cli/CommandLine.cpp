#include "CommandLine.h"

#include "ConsoleOutput.h"
#include "IntegrateCommand.h"
#include "OpsCommand.h"
#include "RunCommand.h"
#include "app/AllOperations.h"
#include "operations/OperationCatalog.h"

#include <QCommandLineParser>
#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>
#include <QLoggingCategory>

namespace wendrel {

namespace {

QString translate(const char* text) { return QCoreApplication::translate("CommandLine", text); }

QString usage()
{
    return translate(
        "Usage: wendrel COMMAND [OPTIONS] [FILE...]\n"
        "\n"
        "Converts, compresses and hands on files. Results land next to the originals under a\n"
        "new name; nothing is ever overwritten and the originals are never changed.\n"
        "\n"
        "Commands:\n"
        "  ops FILE...             list, ring by ring, the entries that fit all the files\n"
        "  run ENTRY FILE...       run one entry (for example subtitle.vtt) on the files\n"
        "  integrate [--remove]    add Wendrel's actions to the file managers' context menus\n"
        "                          (Nautilus, Caja, Nemo, Dolphin, Thunar), or take them away\n"
        "  help                    show this text\n"
        "\n"
        "Options:\n"
        "  --to DIR                put the results in DIR instead of next to the originals\n"
        "  --json                  print a JSON report for scripts\n"
        "  -v, --verbose           log each step to standard error\n"
        "  -h, --help              show this text\n"
        "  --version               show the version\n"
        "\n"
        "Examples:\n"
        "  wendrel ops talk.srt\n"
        "  wendrel run subtitle.vtt talk.srt          writes talk.vtt beside talk.srt\n"
        "  wendrel run subtitle.srt --to ~/Subs *.vtt\n"
        "\n"
        "Exit status: 0 when every file worked, 1 when the job or some files failed,\n"
        "2 for a wrong command line, 130 when interrupted.\n");
}

int usageError(const QString& message)
{
    printError(message);
    printError(translate("Try 'wendrel --help'."));
    return exitUsage;
}

// Absolute, cleaned paths; a missing file is a usage error, reported with its name.
std::optional<QStringList> resolveFiles(const QStringList& arguments)
{
    QStringList paths;
    for (const QString& argument : arguments) {
        const QFileInfo info(argument);
        if (!info.exists() && !info.isSymLink()) {
            printError(translate("%1: No such file or directory").arg(argument));
            return std::nullopt;
        }
        paths.append(QDir::cleanPath(info.absoluteFilePath()));
    }
    return paths;
}

}  // namespace

int runCommandLine(const QStringList& arguments)
{
    QCommandLineParser parser;
    parser.setOptionsAfterPositionalArgumentsMode(QCommandLineParser::ParseAsOptions);
    const QCommandLineOption toOption(QStringLiteral("to"), {}, QStringLiteral("DIR"));
    const QCommandLineOption jsonOption(QStringLiteral("json"));
    const QCommandLineOption verboseOption(QStringList{QStringLiteral("v"), QStringLiteral("verbose")});
    const QCommandLineOption helpOption(QStringList{QStringLiteral("h"), QStringLiteral("help")});
    const QCommandLineOption versionOption(QStringLiteral("version"));
    const QCommandLineOption removeOption(QStringLiteral("remove"));
    parser.addOptions({toOption, jsonOption, verboseOption, helpOption, versionOption, removeOption});

    if (!parser.parse(arguments))
        return usageError(parser.errorText());
    if (parser.isSet(versionOption)) {
        printOut(QStringLiteral("wendrel %1").arg(QCoreApplication::applicationVersion()));
        return exitSuccess;
    }
    const QStringList positional = parser.positionalArguments();
    const QString command = positional.value(0);
    if (parser.isSet(helpOption) || command == u"help") {
        printOut(usage());
        return exitSuccess;
    }
    if (!parser.isSet(verboseOption))
        QLoggingCategory::setFilterRules(QStringLiteral("wendrel.*.info=false"));

    if (command == u"integrate") {
        if (positional.size() > 1)
            return usageError(translate("integrate takes no files."));
        return runIntegrateCommand(parser.isSet(removeOption), parser.isSet(jsonOption));
    }

    OperationCatalog catalog;
    registerAllOperations(catalog);
    const bool json = parser.isSet(jsonOption);

    if (command == u"ops") {
        if (positional.size() < 2)
            return usageError(translate("ops needs at least one file."));
        const std::optional<QStringList> files = resolveFiles(positional.mid(1));
        if (!files)
            return exitUsage;
        return runOpsCommand(catalog, *files, json);
    }
    if (command == u"run") {
        if (positional.size() < 3)
            return usageError(translate("run needs an entry and at least one file."));
        const std::optional<QStringList> files = resolveFiles(positional.mid(2));
        if (!files)
            return exitUsage;
        RunOptions options;
        options.entryId = positional[1];
        options.files = *files;
        options.json = json;
        if (parser.isSet(toOption))
            options.destinationFolder = QDir::cleanPath(QFileInfo(parser.value(toOption)).absoluteFilePath());
        return runRunCommand(catalog, options);
    }
    if (command.isEmpty())
        return usageError(translate("No command given."));
    return usageError(translate("Unknown command '%1'.").arg(command));
}

}  // namespace wendrel
