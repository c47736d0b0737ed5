#pragma once

#include "MemoryBudget.h"
#include "OperationOutcome.h"

#include <QJsonObject>
#include <QString>

#include <atomic>
#include <functional>
#include <memory>

namespace wendrel {

// What a running operation is given: a private scratch folder, a way to report progress, a
// cancellation flag to poll and the answers the user confirmed before the job started. A
// context may be copied to the threads of one job.
class OperationContext {
public:
    using ProgressFunction = std::function<void(double fraction)>;

    explicit OperationContext(QString workDirectory, ProgressFunction progress = {},
                              std::shared_ptr<const std::atomic_bool> cancelled = {},
                              QJsonObject answers = {});

    // The job's scratch folder. Operations write every file they produce below it.
    const QString& workDirectory() const { return m_workDirectory; }

    // Reports progress from 0 to 1; callable from any thread.
    void progress(double fraction) const;

    bool isCancelled() const;

    // What the user answered the entry's prompt, field key to value; empty when the job was
    // started without asking, in which case the operation uses its stored settings.
    const QJsonObject& answers() const { return m_answers; }

    // Ends the operation with OperationCancelled when the user has cancelled the job.
    void throwIfCancelled() const;

    // A fresh folder of its own inside the scratch folder, and `name` inside it: two results
    // with the same name never meet in scratch space. Throws OperationError when the folder
    // can't be made.
    QString outputUrl(const QString& name) const;

    // The result named `name` for `source`: `write` writes it to the scratch path it is given,
    // and the result is handed back ready for placing.
    ProducedFile produce(const QString& source, const QString& name,
                         const std::function<void(const QString& scratchPath)>& write) const;

    // Holds `bytes` of the memory that every job shares until the reservation ends, waiting
    // while other files hold too much of it. An operation reserves what a file will take as
    // soon as it knows (a picture's header gives its size) and before it allocates.
    [[nodiscard]] MemoryBudget::Reservation reserveMemory(qint64 bytes) const
    {
        return {*m_memory, bytes};
    }

private:
    QString m_workDirectory;
    ProgressFunction m_progress;
    std::shared_ptr<const std::atomic_bool> m_cancelled;
    QJsonObject m_answers;
    MemoryBudget* m_memory = &MemoryBudget::shared();
};

}  // namespace wendrel
