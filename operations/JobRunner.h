#pragma once

#include "JobExecution.h"

#include <QObject>

#include <atomic>
#include <memory>
#include <thread>

namespace wendrel {

class UndoStore;

// What the ring's centre shows about the current job.
struct JobStatus {
    enum class State { running, finished, failed, idle };

    State state = State::idle;
    QString title;                // running: the entry's title
    double progress = 0;          // running: 0 to 1
    QString message;              // finished or failed
    QStringList results;          // finished: the placed files
    QList<FileFailure> failures;  // finished or failed: the files that did not work out

    bool isRunning() const { return state == State::running; }
};

// Runs one ring entry at a time over the files in hand, off the interface thread, and
// publishes its status on the thread that owns the runner.
//
// One job at a time: while a job runs, run() refuses another, so two jobs never mix their
// results, their progress or their undo record. Placed results are recorded in the undo
// store as the last results.
class JobRunner : public QObject {
    Q_OBJECT

public:
    using Status = JobStatus;

    explicit JobRunner(UndoStore* undoStore = nullptr, QObject* parent = nullptr);
    ~JobRunner() override;  // cancels a running job and waits for it to clean up

    const Status& status() const { return m_status; }

    // Starts the job and returns at once. Returns false, starting nothing, while a job runs.
    // An entry that asks before it runs is given the request's answers (see askBeforeRunning).
    bool run(JobRequest request);
    bool run(FileOperationPtr operation, const QStringList& paths,
             const std::optional<QString>& destinationFolder = std::nullopt);

    // Asks the running job to stop; it ends as failed with "Cancelled" and places nothing.
    void cancel();

    // Back to idle, as when the ring opens afresh. A running job's status is kept.
    void reset();

    // A job that may not start (an entry that refuses one of the files): nothing runs, the
    // status is failed with `message`, and the job ends at once. Refused while a job runs.
    bool reject(FileOperationPtr operation, const QStringList& paths, const QString& message);

Q_SIGNALS:
    void statusChanged();
    // Once per job, after its results are placed and its scratch folder is gone.
    void jobEnded(const wendrel::JobRequest& request, const wendrel::JobReport& report);

private:
    void setStatus(Status status);
    void postProgress();
    void finish(const JobRequest& request, const JobReport& report);

    UndoStore* m_undoStore;
    Status m_status;
    std::shared_ptr<std::atomic_bool> m_cancelled;
    std::atomic<double> m_latestProgress{0};
    std::atomic_bool m_progressPosted{false};
    std::jthread m_worker;
};

}  // namespace wendrel
