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

// Names the first file the entry refuses, with the ring's sentence.
std::optional<QString> refusalNamingFile(const FileOperation& entry, const QStringList& files)
{
    for (const QString& file : files) {
        if (const std::optional<QString> refusal = OperationCatalog::refusal(entry, {file}))
            return QStringLiteral("%1: %2").arg(QDir::toNativeSeparators(file), *refusal);
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

// The answers the job runs with, or the exit status that ends the command instead.
std::variant<QJsonObject, ExitStatus> answersForRun(const FileOperation& entry, const RunOptions& options)
{
    if (options.settings.isEmpty()) {
        if (::isatty(STDIN_FILENO) != 1)
            return QJsonObject();  // the operation uses its stored settings
        TerminalPrompt terminal;
        const std::optional<QJsonObject> answers = askBeforeRunning(
            entry, options.files, [&](const PromptRequest& request) { return terminal.ask(request); });
        if (!answers) {
            printError(translate("Cancelled; nothing was run."));
            return exitCancelled;
        }
        return *answers;
    }

    const std::optional<PromptRequest> request = entry.prompt(options.files);
    if (!request) {
        printError(translate("%1 has no settings: --%2 doesn't apply to it.").arg(entry.id(), options.settings.first().first));
        return exitUsage;
    }
    const CheckedAnswers checked = answersFromOptions(*request, withAbsoluteFolders(*request, options.settings));
    if (!checked.isValid()) {
        printError(QStringLiteral("%1: %2").arg(entry.id(), checked.problem));
        printError(translate("'wendrel help %1' lists its settings.").arg(entry.id()));
        return exitUsage;
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
}

}  // namespace

int runRunCommand(const OperationCatalog& catalog, const RunOptions& options)
{
    const FileOperationPtr entry = catalog.find(options.entryId);
    if (!entry) {
        printError(translate("There is no entry '%1'. 'wendrel ops FILE' lists the entries that fit.")
                       .arg(options.entryId));
        return exitUsage;
    }
    if (const std::optional<QString> refusal = refusalNamingFile(*entry, options.files)) {
        printError(*refusal);
        return exitJobFailed;
    }
    const std::variant<QJsonObject, ExitStatus> answers = answersForRun(*entry, options);
    if (const ExitStatus* status = std::get_if<ExitStatus>(&answers))
        return *status;
    if (options.destinationFolder && !QDir().mkpath(*options.destinationFolder)) {
        printError(translate("Can't create the folder %1").arg(*options.destinationFolder));
        return exitUsage;
    }

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
