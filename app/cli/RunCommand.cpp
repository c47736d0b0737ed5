#include "RunCommand.h"

#include "CommandLine.h"
#include "ConsoleOutput.h"
#include "InterruptWatch.h"
#include "TerminalProgress.h"
#include "TerminalPrompt.h"
#include "operations/JobRunner.h"
#include "operations/OperationCatalog.h"
#include "operations/prompt/AskBeforeRunning.h"
#include "operations/prompt/PromptValues.h"

#include <QCoreApplication>
#include <QDir>
#include <QEventLoop>
#include <QJsonArray>

#include <unistd.h>
#include <variant>

namespace wendrel {

namespace {

QString translate(const char* text) { return QCoreApplication::translate("CommandLine", text); }

struct RefusedFile {
    QString file;
    QString reason;  // the ring's sentence: "SRT doesn't work with this file"
};

// The first file the entry refuses, if any.
std::optional<RefusedFile> firstRefusedFile(const FileOperation& entry, const QStringList& files)
{
    for (const QString& file : files) {
        if (const std::optional<QString> refusal = OperationCatalog::refusal(entry, {file}))
            return RefusedFile{file, *refusal};
    }
    return std::nullopt;
}

QJsonObject jsonReport(const QString& entryId, const JobReport& report, bool cancelled)
{
    QJsonArray failures;
    for (const FileFailure& failure : report.failures) {
        failures.append(QJsonObject{{QStringLiteral("file"), failure.source},
                                    {QStringLiteral("message"), failure.message}});
    }
    const QString status = cancelled          ? QStringLiteral("cancelled")
                           : report.succeeded ? QStringLiteral("finished")
                                              : QStringLiteral("failed");
    return {
        {QStringLiteral("operation"), entryId},
        {QStringLiteral("status"), status},
        {QStringLiteral("message"), report.message},
        {QStringLiteral("results"), QJsonArray::fromStringList(report.results)},
        {QStringLiteral("failures"), failures},
        {QStringLiteral("notes"), QJsonArray::fromStringList(report.notes)},
    };
}

// Folders named on the command line are relative to the current folder; answers hold them whole.
QList<std::pair<QString, QString>> withAbsoluteFolders(const PromptRequest& request,
                                                       QList<std::pair<QString, QString>> settings)
{
    for (auto& [option, text] : settings) {
        const PromptField* field = request.fieldForOption(option);
        if (field && field->kind == PromptField::Kind::folder && !text.isEmpty())
            text = QDir::cleanPath(QDir::current().absoluteFilePath(text));
    }
    return settings;
}

// Why the command ends before the job starts.
struct NotStarted {
    ExitStatus status;
    RunRefusal refusal;
    QString message;
    QString hint = {};
};

// The answers the job runs with, or why the command ends instead.
std::variant<QJsonObject, NotStarted> answersForRun(const FileOperation& entry, const RunOptions& options)
{
    if (options.settings.isEmpty()) {
        if (::isatty(STDIN_FILENO) != 1)
            return QJsonObject();  // the operation uses its stored settings
        TerminalPrompt terminal;
        const std::optional<QJsonObject> answers = askBeforeRunning(
            entry, options.files, [&](const PromptRequest& request) { return terminal.ask(request); });
        if (!answers)
            return NotStarted{exitCancelled, RunRefusal::declined, translate("Cancelled; nothing was run.")};
        return *answers;
    }

    const std::optional<PromptRequest> request = entry.prompt(options.files);
    if (!request) {
        return NotStarted{exitUsage, RunRefusal::invalidCommand,
                          translate("%1 has no settings: --%2 doesn't apply to it.").arg(entry.id(), options.settings.first().first)};
    }
    const CheckedAnswers checked = answersFromOptions(*request, withAbsoluteFolders(*request, options.settings));
    if (!checked.isValid()) {
        return NotStarted{exitUsage, RunRefusal::invalidCommand, QStringLiteral("%1: %2").arg(entry.id(), checked.problem),
                          translate("'wendrel help %1' lists its settings.").arg(entry.id())};
    }
    return checked.answers;
}

void printPlain(const JobReport& report)
{
    for (const QString& result : report.results)
        printOut(result);
    if (report.results.isEmpty() && report.succeeded)
        printOut(report.message);  // "Nothing to do", or what the operation did elsewhere
    for (const FileFailure& failure : report.failures)
        printError(QStringLiteral("%1: %2").arg(failure.source, failure.message));
    if (!report.succeeded && report.failures.isEmpty())
        printError(report.message);
    // What the user should know about the results ("2 links left out"), apart from the list of
    // paths on standard output.
    for (const QString& note : report.notes)
        printError(note);
}

}  // namespace

QString rawValue(RunRefusal refusal)
{
    switch (refusal) {
    case RunRefusal::invalidCommand: return QStringLiteral("invalid");
    case RunRefusal::unknownEntry: return QStringLiteral("unknown");
    case RunRefusal::fileRefused: return QStringLiteral("refused");
    case RunRefusal::declined: return QStringLiteral("cancelled");
    }
    Q_UNREACHABLE();
}

QJsonObject notStartedReport(const QString& entryId, RunRefusal refusal, const QString& message,
                             const QString& refusedFile)
{
    JobReport report;
    report.message = message;
    if (!refusedFile.isEmpty())
        report.failures.append({refusedFile, message});
    QJsonObject json = jsonReport(entryId, report, false);
    json.insert(QStringLiteral("status"), rawValue(refusal));
    return json;
}

int runRunCommand(const OperationCatalog& catalog, const RunOptions& options)
{
    // A run that can't start: the reason on standard error, or as the one JSON report.
    const auto notStarted = [&](ExitStatus status, RunRefusal refusal, const QString& message,
                                const QString& hint = {}, const QString& refusedFile = {}) {
        if (options.json) {
            printJson(notStartedReport(options.entryId, refusal, message, refusedFile));
        } else {
            printError(refusedFile.isEmpty() ? message
                                             : QStringLiteral("%1: %2").arg(QDir::toNativeSeparators(refusedFile), message));
            if (!hint.isEmpty())
                printError(hint);
        }
        return int(status);
    };

    const FileOperationPtr entry = catalog.find(options.entryId);
    if (!entry) {
        return notStarted(exitUsage, RunRefusal::unknownEntry,
                          translate("There is no entry '%1'. 'wendrel ops FILE' lists the entries that fit.")
                              .arg(options.entryId));
    }
    if (const std::optional<RefusedFile> refused = firstRefusedFile(*entry, options.files))
        return notStarted(exitJobFailed, RunRefusal::fileRefused, refused->reason, {}, refused->file);
    const std::variant<QJsonObject, NotStarted> answers = answersForRun(*entry, options);
    if (const NotStarted* stop = std::get_if<NotStarted>(&answers))
        return notStarted(stop->status, stop->refusal, stop->message, stop->hint);
    if (options.destinationFolder && !QDir().mkpath(*options.destinationFolder))
        return notStarted(exitUsage, RunRefusal::invalidCommand,
                          translate("Can't create the folder %1").arg(*options.destinationFolder));

    JobRunner runner;
    TerminalProgress progress;
    InterruptWatch interrupts;
    bool cancelled = false;
    JobReport report;
    QEventLoop loop;

    QObject::connect(&runner, &JobRunner::statusChanged, &loop, [&] {
        if (runner.status().isRunning())
            progress.update(runner.status().title, runner.status().progress);
    });
    QObject::connect(&runner, &JobRunner::jobEnded, &loop,
                     [&](const JobRequest&, const JobReport& ended) {
                         report = ended;
                         loop.quit();
                     });
    QObject::connect(&interrupts, &InterruptWatch::interrupted, &loop, [&] {
        cancelled = true;
        runner.cancel();
    });

    if (!runner.run({entry, options.files, options.destinationFolder, std::get<QJsonObject>(answers)}))
        return exitJobFailed;
    loop.exec();
    progress.clear();

    if (options.json)
        printJson(jsonReport(entry->id(), report, cancelled));
    else if (cancelled)
        printError(report.message);
    else
        printPlain(report);

    if (cancelled)
        return exitCancelled;
    return report.succeeded && report.failures.isEmpty() ? exitSuccess : exitJobFailed;
}

}  // namespace wendrel
