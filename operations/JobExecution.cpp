#include "JobExecution.h"

#include "FileMoves.h"
#include "FileNames.h"
#include "Logging.h"
#include "OperationError.h"
#include "ResultPlacement.h"

#include <QCoreApplication>
#include <QDir>
#include <QThread>
#include <QUuid>

#include <algorithm>
#include <thread>
#include <vector>

namespace wendrel {

namespace {

QString translate(const char* text) { return QCoreApplication::translate("JobRunner", text); }

// Removes the scratch folder however the job leaves this scope.
class ScratchFolder {
public:
    ScratchFolder()
        : m_path(QDir::tempPath() + QStringLiteral("/Wendrel-")
                 + QUuid::createUuid().toString(QUuid::WithoutBraces).toUpper())
    {
    }
    ~ScratchFolder() { removeItem(m_path); }
    ScratchFolder(const ScratchFolder&) = delete;
    ScratchFolder& operator=(const ScratchFolder&) = delete;

    bool create() const { return QDir().mkpath(m_path); }
    const QString& path() const { return m_path; }

private:
    QString m_path;
};

// The outcome of one run: what it produced, or why it failed.
struct RunResult {
    std::optional<OperationOutcome> outcome;
    QString error;
};

RunResult runOnce(const FileOperation& operation, const QStringList& paths,
                  const OperationContext& context)
{
    try {
        return {operation.run(paths, context), {}};
    } catch (const OperationError& error) {
        return {std::nullopt, error.message()};
    } catch (const std::exception& error) {
        return {std::nullopt, QString::fromUtf8(error.what())};
    } catch (...) {
        return {std::nullopt, translate("Something went wrong")};
    }
}

// Mean progress over the runs of one job; each run owns one slot.
class ProgressMeter {
public:
    ProgressMeter(size_t runs, std::function<void(double)> report)
        : m_slots(runs), m_report(std::move(report))
    {
    }

    void set(size_t run, double fraction)
    {
        m_slots[run].store(fraction);
        if (!m_report)
            return;
        double total = 0;
        for (const auto& slot : m_slots)
            total += slot.load();
        m_report(total / static_cast<double>(m_slots.size()));
    }

private:
    std::vector<std::atomic<double>> m_slots;
    std::function<void(double)> m_report;
};

// Runs the operation once per file on up to one thread per core; results keep input order.
std::vector<RunResult> runPerFile(const FileOperation& operation, const QStringList& paths,
                                  const QString& scratch, const QJsonObject& answers,
                                  const std::shared_ptr<const std::atomic_bool>& cancelled,
                                  ProgressMeter& meter)
{
    std::vector<RunResult> results(static_cast<size_t>(paths.size()));
    std::atomic<size_t> next{0};
    auto work = [&] {
        for (size_t index = next++; index < results.size(); index = next++) {
            if (cancelled && cancelled->load()) {
                results[index] = {std::nullopt, OperationCancelled().message()};
                continue;
            }
            const OperationContext context(
                scratch, [&meter, index](double fraction) { meter.set(index, fraction); }, cancelled, answers);
            results[index] = runOnce(operation, {paths[static_cast<qsizetype>(index)]}, context);
            meter.set(index, 1.0);
        }
    };

    const size_t workers =
        std::min(results.size(), static_cast<size_t>(std::max(1, QThread::idealThreadCount())));
    std::vector<std::jthread> threads;
    for (size_t worker = 1; worker < workers; ++worker)
        threads.emplace_back(work);
    work();  // this thread is one of the workers
    return results;
}

JobReport failedReport(QString message) { return {false, std::move(message), {}, {}}; }

}  // namespace

JobReport executeJob(const JobRequest& request, std::shared_ptr<const std::atomic_bool> cancelled,
                     const std::function<void(double)>& progress)
{
    const FileOperation& operation = *request.operation;
    qCInfo(lcJobs, "start %s on %ld file(s)", qUtf8Printable(operation.id()),
           static_cast<long>(request.paths.size()));

    const ScratchFolder scratch;
    if (!scratch.create())
        return failedReport(translate("Couldn't create a scratch folder"));

    // Gather every run's outcome, in input order.
    std::vector<RunResult> runs;
    std::vector<QString> runSources;  // the file each run stands for, for failure reports
    if (operation.combinesInputs()) {
        ProgressMeter meter(1, progress);
        const OperationContext context(
            scratch.path(), [&meter](double fraction) { meter.set(0, fraction); }, cancelled, request.answers);
        runs.push_back(runOnce(operation, request.paths, context));
        runSources.push_back(request.paths.value(0));
    } else {
        ProgressMeter meter(static_cast<size_t>(std::max<qsizetype>(1, request.paths.size())),
                            progress);
        runs = runPerFile(operation, request.paths, scratch.path(), request.answers, cancelled, meter);
        runSources.assign(request.paths.cbegin(), request.paths.cend());
    }

    if (cancelled && cancelled->load())
        return failedReport(OperationCancelled().message());

    // Place every produced file in order; a file that can't be placed is skipped.
    JobReport report;
    std::optional<QString> lastError;
    std::optional<QString> doneMessage;
    for (size_t index = 0; index < runs.size(); ++index) {
        const RunResult& run = runs[index];
        if (!run.outcome) {
            report.failures.append({runSources[index], run.error});
            lastError = run.error;
            continue;
        }
        if (run.outcome->isDone()) {
            doneMessage = run.outcome->message();
            continue;
        }
        for (const ProducedFile& file : run.outcome->producedFiles()) {
            try {
                report.results.append(placeResult(file, request.destinationFolder));
                if (!file.note.isEmpty() && !report.notes.contains(file.note))
                    report.notes.append(file.note);
            } catch (const OperationError& error) {
                report.failures.append({file.source, error.message()});
                lastError = error.message();
            }
        }
    }

    if (!report.results.isEmpty()) {
        report.succeeded = true;
        report.message = report.results.size() == 1
                             ? lastPathComponent(report.results.first())
                             : translate("%1 files created").arg(report.results.size());
        if (!report.notes.isEmpty())
            report.message += QStringLiteral(" (%1)").arg(report.notes.join(QStringLiteral(", ")));
    } else if (doneMessage) {
        report.succeeded = true;
        report.message = *doneMessage;
    } else if (lastError) {
        report.message = *lastError;
    } else {
        report.succeeded = true;
        report.message = translate("Nothing to do");
    }
    return report;
}

}  // namespace wendrel
