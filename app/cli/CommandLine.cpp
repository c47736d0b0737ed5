#include "CommandLine.h"

#include "ConsoleOutput.h"
#include "EntryHelp.h"
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

QString usage(const OperationCatalog& catalog)
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
        "  help [ENTRY]            show this text, or what one entry does and its settings\n"
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
        "  wendrel run image.compress --target-mb 0.5 photo.jpg\n"
        "\n"
        "Settings: entries that ask before they run take the answers as options.\n"
        "%1\n"
        "With no settings given, a terminal asks for them; otherwise the last confirmed ones\n"
        "are used. 'wendrel help ENTRY' describes the values each setting takes.\n"
        "\n"
        "Exit status: 0 when every file worked, 1 when the job or some files failed,\n"
        "2 for a wrong command line, 130 when interrupted or cancelled.\n")
        .arg(promptOptionsSummary(catalog));
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

    // Quiet unless asked otherwise, from the start: registering the entries may log already.
    QLoggingCategory::setFilterRules(QStringLiteral("wendrel.*.info=false"));

    // Every entry's settings are options; the chosen entry refuses the ones it doesn't have.
    OperationCatalog catalog;
    registerAllOperations(catalog);
    const QStringList settingNames = promptOptionNames(catalog);
    for (const QString& name : settingNames)
        parser.addOption(QCommandLineOption(name, {}, QStringLiteral("VALUE")));

    if (!parser.parse(arguments))
        return usageError(parser.errorText());
    if (parser.isSet(versionOption)) {
        printOut(QStringLiteral("wendrel %1").arg(QCoreApplication::applicationVersion()));
        return exitSuccess;
    }
    const QStringList positional = parser.positionalArguments();
    const QString command = positional.value(0);
    if (parser.isSet(helpOption) || command == u"help") {
        // "help ENTRY" and "run ENTRY --help" describe that entry.
        const QString entryId = command == u"help" || command == u"run" ? positional.value(1) : QString();
        if (entryId.isEmpty()) {
            printOut(usage(catalog));
            return exitSuccess;
        }
        const FileOperationPtr entry = catalog.find(entryId);
        if (!entry)
            return usageError(translate("There is no entry '%1'.").arg(entryId));
        printOut(entryHelp(*entry));
        return exitSuccess;
    }
    if (parser.isSet(verboseOption))
        QLoggingCategory::setFilterRules(QStringLiteral("wendrel.*.info=true"));

    QList<std::pair<QString, QString>> settings;
    for (const QString& name : settingNames) {
        if (parser.isSet(name))
            settings.append({name, parser.values(name).constLast()});
    }
    if (!settings.isEmpty() && command != u"run")
        return usageError(translate("--%1 is a setting for 'wendrel run ENTRY'.").arg(settings.first().first));

    if (command == u"integrate") {
        if (positional.size() > 1)
            return usageError(translate("integrate takes no files."));
        return runIntegrateCommand(parser.isSet(removeOption), parser.isSet(jsonOption));
    }

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
        options.settings = settings;
        if (parser.isSet(toOption))
            options.destinationFolder = QDir::cleanPath(QFileInfo(parser.value(toOption)).absoluteFilePath());
        return runRunCommand(catalog, options);
    }
    if (command.isEmpty())
        return usageError(translate("No command given."));
    return usageError(translate("Unknown command '%1'.").arg(command));
}

}  // namespace wendrel
