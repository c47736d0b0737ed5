#include "RunCommand.h"

#include "CommandLine.h"
#include "ConsoleOutput.h"
#include "InterruptWatch.h"
#include "TerminalProgress.h"
#include "operations/JobRunner.h"
#include "operations/OperationCatalog.h"

#include <QCoreApplication>
#include <QDir>
#include <QEventLoop>
#include <QJsonArray>

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

    if (!runner.run(entry, options.files, options.destinationFolder))
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
