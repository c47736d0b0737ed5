#pragma once

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
int runRunCommand(const OperationCatalog& catalog, const RunOptions& options);

}  // namespace wendrel
