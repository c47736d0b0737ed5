#pragma once

#include "operations/JobRunner.h"
#include "operations/Op.h"

namespace wendrel::test {

// Runs a job through a JobRunner and waits for its end on a local event loop.
// Fails the calling test (and returns a failed report) if the job does not end in time.
JobReport runJob(JobRunner& runner, JobRequest request);
JobReport runJob(JobRunner& runner, FileOperationPtr operation, const QStringList& paths,
                 const std::optional<QString>& destinationFolder = std::nullopt);

// Entries whose body the test provides, taking any item.
FileOperationPtr perFileEntry(const QString& id, Op::PerFileBody body);
FileOperationPtr combinedEntry(const QString& id, Op::CombinedBody body);

// Writes `bytes` as a produced file named `name`, the way a real operation does.
ProducedFile produce(const OperationContext& context, const QString& source, const QString& name,
                     const QByteArray& bytes);

}  // namespace wendrel::test
