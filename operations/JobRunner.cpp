#include "JobRunner.h"

#include "UndoStore.h"

#include <QMetaObject>

namespace wendrel {

JobRunner::JobRunner(UndoStore* undoStore, QObject* parent)
    : QObject(parent), m_undoStore(undoStore)
{
}

JobRunner::~JobRunner()
{
    cancel();
    if (m_worker.joinable())
        m_worker.join();
}

bool JobRunner::run(FileOperationPtr operation, const QStringList& paths,
                    const std::optional<QString>& destinationFolder)
{
    return run(JobRequest{std::move(operation), paths, destinationFolder});
}

bool JobRunner::run(JobRequest request)
{
    if (m_status.isRunning() || !request.operation)
        return false;
    if (m_worker.joinable())
        m_worker.join();  // the previous job has ended; its thread is exiting

    m_cancelled = std::make_shared<std::atomic_bool>(false);
    m_latestProgress = 0;
    setStatus({Status::State::running, request.operation->title(), 0, {}, {}, {}});

    m_worker = std::jthread([this, request, cancelled = m_cancelled] {
        const JobReport report = executeJob(request, cancelled, [this](double fraction) {
            m_latestProgress = fraction;
            if (!m_progressPosted.exchange(true))
                QMetaObject::invokeMethod(this, &JobRunner::postProgress, Qt::QueuedConnection);
        });
        QMetaObject::invokeMethod(this, [this, request, report] { finish(request, report); },
                                  Qt::QueuedConnection);
    });
    return true;
}

void JobRunner::cancel()
{
    if (m_cancelled)
        m_cancelled->store(true);
}

void JobRunner::reset()
{
    if (!m_status.isRunning())
        setStatus({});
}

bool JobRunner::reject(FileOperationPtr operation, const QStringList& paths, const QString& message)
{
    if (m_status.isRunning())
        return false;
    finish({std::move(operation), paths, std::nullopt}, {false, message, {}, {}});
    return true;
}

void JobRunner::setStatus(Status status)
{
    m_status = std::move(status);
    Q_EMIT statusChanged();
}

// Progress arrives from the job's threads far more often than anyone can see it; at most
// one update waits in the event queue at a time and it carries the latest value.
void JobRunner::postProgress()
{
    m_progressPosted = false;
    if (!m_status.isRunning())
        return;
    Status status = m_status;
    status.progress = m_latestProgress;
    setStatus(std::move(status));
}

void JobRunner::finish(const JobRequest& request, const JobReport& report)
{
    if (m_worker.joinable())
        m_worker.join();
    if (report.succeeded && !report.results.isEmpty() && m_undoStore)
        m_undoStore->record(report.results);

    Status status;
    status.state = report.succeeded ? Status::State::finished : Status::State::failed;
    status.message = report.message;
    status.results = report.results;
    status.failures = report.failures;
    setStatus(std::move(status));
    Q_EMIT jobEnded(request, report);
}

}  // namespace wendrel
