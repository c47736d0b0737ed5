#pragma once

#include "FileOperation.h"

#include <QJsonObject>
#include <QList>
#include <QString>
#include <QStringList>

#include <atomic>
#include <functional>
#include <memory>
#include <optional>

namespace wendrel {

// A file whose run failed while the job went on with the others.
struct FileFailure {
    QString source;
    QString message;
};

// How a job ended.
struct JobReport {
    bool succeeded = false;
    QString message;               // the result's name, "%lld files created", or why it failed
    QStringList results;           // placed files, in input order
    QList<FileFailure> failures;   // every run or placement that failed, in input order
    QStringList notes;             // what the user should know about the placed files, once each
};

struct JobRequest {
    FileOperationPtr operation;
    QStringList paths;
    std::optional<QString> destinationFolder;  // none: next to each original
    QJsonObject answers{};                     // the confirmed prompt; empty when not asked
};

// Runs one entry over its files, start to finish, on the calling thread:
// makes the scratch folder, runs the operation (once with all files when it combines its
// inputs, otherwise once per file, several files at once on all cores), places the results in
// input order and removes the scratch folder on every path, failures and cancellation included.
// The message names the one result, or counts them, followed by the results' notes in
// parentheses: "Photos (2 links left out)".
//
// A file that fails does not stop the others: their results are placed and the failure is
// listed. The job fails as a whole only when nothing was placed. Once `cancelled` is set the
// job stops as soon as the operations notice, and nothing is placed.
//
// `progress` receives the mean progress over the files, from any thread.
JobReport executeJob(const JobRequest& request, std::shared_ptr<const std::atomic_bool> cancelled,
                     const std::function<void(double)>& progress);

}  // namespace wendrel
