#include "CommandLine.h"

#include "ConsoleOutput.h"
#include "EntryHelp.h"
#include "IntegrateCommand.h"
#include "OpsCommand.h"
#include "RunCommand.h"
#include "operations/OperationCatalog.h"

#include <QCommandLineParser>
#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>
#include <QLoggingCategory>

#include <algorithm>
#include <variant>

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
        "  ring KIND FILE...       open a ring for the files at the pointer, as the file managers'\n"
        "                          actions do; KIND is convert, tools or actions. Starts the\n"
        "                          tray agent when none is running (its log goes to\n"
        "                          ~/.local/state/wendrel/agent.log)\n"
        "  ops FILE...             list, ring by ring, the entries that fit all the files\n"
        "  ops --all               list every entry of each ring with its id and title\n"
        "  run ENTRY FILE...       run one entry (for example subtitle.vtt) on the files\n"
        "  integrate [--remove]    add Wendrel's actions to the file managers' context menus\n"
        "                          (Nautilus, Caja, Nemo, Dolphin, Thunar), or take them away\n"
        "  help [ENTRY]            show this text, or what one entry does and its settings\n"
        "\n"
        "Without a command, Wendrel starts as the tray agent.\n"
        "\n"
        "Options:\n"
        "  --to DIR                put the results in DIR instead of next to the originals\n"
        "  --json                  print a JSON report for scripts; 'run' prints one whatever\n"
        "                          happens, refusals and command-line errors included\n"
        "  --all                   with 'ops': every entry, not only those that fit files\n"
        "  -v, --verbose           log each step to standard error\n"
        "  -h, --help              show this text\n"
        "  --version               show the version\n"
        "\n"
        "Examples:\n"
        "  wendrel ring convert photo.png\n"
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

// Absolute, cleaned paths; a missing file is an error that names it.
std::variant<QStringList, QString> resolveFiles(const QStringList& arguments)
{
    QStringList paths;
    for (const QString& argument : arguments) {
        const QFileInfo info(argument);
        if (!info.exists() && !info.isSymLink())
            return translate("%1: No such file or directory").arg(argument);
        paths.append(QDir::cleanPath(info.absoluteFilePath()));
    }
    return paths;
}

}  // namespace

bool runsEntryOf(const QStringList& arguments, const OperationCatalog& catalog)
{
    if (arguments.size() < 2 || arguments.at(1) != u"run")
        return false;
    // An option that none of these entries has may be another layer's setting, and only that
    // layer's entries can say whether it applies.
    static const QStringList commandOptions{QStringLiteral("to"),      QStringLiteral("json"),
                                            QStringLiteral("verbose"), QStringLiteral("help"),
                                            QStringLiteral("version"), QStringLiteral("remove"),
                                            QStringLiteral("all")};
    const QStringList settings = promptOptionNames(catalog);
    for (const QString& argument : arguments) {
        const QString option = argument.startsWith(u"--") ? argument.mid(2).section(u'=', 0, 0) : QString();
        if (!option.isEmpty() && !commandOptions.contains(option) && !settings.contains(option))
            return false;
    }
    return std::any_of(arguments.begin() + 2, arguments.end(),
                       [&](const QString& argument) { return catalog.find(argument) != nullptr; });
}

bool mayRunTextDrawingEntry(const QStringList& arguments, const OperationCatalog& catalog)
{
    if (!arguments.contains(u"run"))
        return false;
    for (qsizetype i = 0; i < arguments.size(); ++i) {
        const FileOperationPtr entry = catalog.find(arguments.at(i));
        if (!entry || !entry->drawsText())
            continue;
        // The files are the existing paths after the entry; option values are never files
        // for an entry whose inputs decide this.
        QStringList files;
        for (qsizetype j = i + 1; j < arguments.size(); ++j) {
            if (QFileInfo(arguments.at(j)).isFile())
                files.append(arguments.at(j));
        }
        if (entry->drawsTextFor(files))
            return true;
    }
    return false;
}

int runCommandLine(const QStringList& arguments, const OperationCatalog& catalog)
{
    QCommandLineParser parser;
    parser.setOptionsAfterPositionalArgumentsMode(QCommandLineParser::ParseAsOptions);
    const QCommandLineOption toOption(QStringLiteral("to"), {}, QStringLiteral("DIR"));
    const QCommandLineOption jsonOption(QStringLiteral("json"));
    const QCommandLineOption verboseOption(QStringList{QStringLiteral("v"), QStringLiteral("verbose")});
    const QCommandLineOption helpOption(QStringList{QStringLiteral("h"), QStringLiteral("help")});
    const QCommandLineOption versionOption(QStringLiteral("version"));
    const QCommandLineOption removeOption(QStringLiteral("remove"));
    const QCommandLineOption allOption(QStringLiteral("all"));
    parser.addOptions({toOption, jsonOption, verboseOption, helpOption, versionOption, removeOption, allOption});

    // Every entry's settings are options; the chosen entry refuses the ones it doesn't have.
    const QStringList settingNames = promptOptionNames(catalog);
    for (const QString& name : settingNames)
        parser.addOption(QCommandLineOption(name, {}, QStringLiteral("VALUE")));

    const bool parsed = parser.parse(arguments);
    const QStringList positional = parser.positionalArguments();
    const QString command = positional.value(0);
    const bool json = parser.isSet(jsonOption);
    // Scripts that ask `run` for JSON read a report on every path, mistakes in the command included.
    const auto runUsageError = [&](const QString& message) {
        if (command != u"run" || !json || parser.isSet(helpOption))
            return usageError(message);
        printJson(notStartedReport(positional.value(1), RunRefusal::invalidCommand, message));
        return int(exitUsage);
    };

    if (!parsed)
        return runUsageError(parser.errorText());
    if (parser.isSet(versionOption)) {
        printOut(QStringLiteral("wendrel %1").arg(QCoreApplication::applicationVersion()));
        return exitSuccess;
    }
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
    if (parser.isSet(allOption) && command != u"ops")
        return usageError(translate("--all goes with 'wendrel ops'."));

    if (command == u"integrate") {
        if (positional.size() > 1)
            return usageError(translate("integrate takes no files."));
        return runIntegrateCommand(parser.isSet(removeOption), json);
    }
    if (command == u"ops") {
        if (parser.isSet(allOption)) {
            if (positional.size() > 1)
                return usageError(translate("ops --all lists every entry; it takes no files."));
            return runAllOpsCommand(catalog, json);
        }
        if (positional.size() < 2)
            return usageError(translate("ops needs at least one file, or --all."));
        const std::variant<QStringList, QString> files = resolveFiles(positional.mid(1));
        if (const QString* missing = std::get_if<QString>(&files))
            return usageError(*missing);
        return runOpsCommand(catalog, std::get<QStringList>(files), json);
    }
    if (command == u"run") {
        if (positional.size() < 3)
            return runUsageError(translate("run needs an entry and at least one file."));
        const std::variant<QStringList, QString> files = resolveFiles(positional.mid(2));
        if (const QString* missing = std::get_if<QString>(&files))
            return runUsageError(*missing);
        RunOptions options;
        options.entryId = positional[1];
        options.files = std::get<QStringList>(files);
        options.json = json;
        options.settings = settings;
        if (parser.isSet(toOption)) {
            const QString folder = parser.value(toOption);
            if (folder.isEmpty())
                return runUsageError(translate("--to needs a folder; leave it out to put the results next to the originals."));
            options.destinationFolder = QDir::cleanPath(QFileInfo(folder).absoluteFilePath());
        }
        return runRunCommand(catalog, options);
    }
    if (command.isEmpty())
        return usageError(translate("No command given."));
    return usageError(translate("Unknown command '%1'.").arg(command));
}

}  // namespace wendrel
