#pragma once

#include "operations/JobRunner.h"
#include "operations/Op.h"

namespace wendrel::test {

// Runs a job through a JobRunner and waits for its end on a local event loop.
// Fails the calling test (and returns a failed report) if the job does not end in time.
JobReport runJob(JobRunner& runner, JobRequest request);
JobReport runJob(JobRunner& runner, FileOperationPtr operation, const QStringList& paths,
                 const std::optional<QString>& destinationFolder = std::nullopt);

// A per-file entry whose body the test provides; inputs default to any item.
FileOperationPtr makeEntry(const QString& id, Op::Body body, bool combinesInputs = false,
                           QList<ContentType> inputs = {ContentType::item()});

// Writes `bytes` as a produced file named `name`, the way a real operation does.
ProducedFile produce(const OperationContext& context, const QString& source, const QString& name,
                     const QByteArray& bytes);

}  // namespace wendrel::test
