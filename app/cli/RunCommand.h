#pragma once

#include <QJsonObject>
#include <QString>
#include <QStringList>

#include <optional>
#include <utility>

namespace wendrel {

class OperationCatalog;

struct RunOptions {
    QString entryId;
    QStringList files;                         // absolute paths, in the order given
    std::optional<QString> destinationFolder;  // --to
    bool json = false;
    QList<std::pair<QString, QString>> settings;  // options that answer the entry's prompt
};

// `wendrel run ENTRY FILE...`: runs the entry through the job runner, exactly as the ring
// would, then prints the placed files (or the message) and returns the exit status.
//
// An entry that asks before running takes its answers from the settings given, which serve
// this run only; with none given, a terminal asks for them (and the entry remembers what was
// confirmed, as after its dialog); with none given and no terminal, the stored ones count.
//
// With `json`, exactly one report goes to standard output whatever happens, a run refused
// before it starts included; the exit status is the same as without it.
int runRunCommand(const OperationCatalog& catalog, const RunOptions& options);

// Why a run never started, as its JSON report names it in "status".
enum class RunRefusal {
    invalidCommand,  // "invalid": the command line is wrong (exit status 2)
    unknownEntry,    // "unknown": no entry has that id (2)
    fileRefused,     // "refused": the entry doesn't take one of the files (1)
    declined,        // "cancelled": the prompt on the terminal was declined (130)
};

QString rawValue(RunRefusal refusal);

// The JSON report of a run that never started: its status, the message a person would read
// and, for a refused file, that file among the failures. Nothing was placed.
QJsonObject notStartedReport(const QString& entryId, RunRefusal refusal, const QString& message,
                             const QString& refusedFile = {});

}  // namespace wendrel
