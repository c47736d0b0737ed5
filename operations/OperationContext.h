#pragma once

#include <QString>

#include <atomic>
#include <functional>
#include <memory>

namespace wendrel {

// What a running operation is given: a private scratch folder, a way to report progress and
// a cancellation flag to poll. A context may be copied to the threads of one job.
class OperationContext {
public:
    using ProgressFunction = std::function<void(double fraction)>;

    explicit OperationContext(QString workDirectory, ProgressFunction progress = {},
                              std::shared_ptr<const std::atomic_bool> cancelled = {});

    // The job's scratch folder. Operations write every file they produce below it.
    const QString& workDirectory() const { return m_workDirectory; }

    // Reports progress from 0 to 1; callable from any thread.
    void progress(double fraction) const;

    bool isCancelled() const;

    // Ends the operation with OperationCancelled when the user has cancelled the job.
    void throwIfCancelled() const;

    // A fresh folder of its own inside the scratch folder, and `name` inside it: two results
    // with the same name never meet in scratch space. Throws OperationError when the folder
    // can't be made.
    QString outputUrl(const QString& name) const;

private:
    QString m_workDirectory;
    ProgressFunction m_progress;
    std::shared_ptr<const std::atomic_bool> m_cancelled;
};

}  // namespace wendrel
