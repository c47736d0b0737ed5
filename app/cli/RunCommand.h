#pragma once

#include <QString>
#include <QStringList>

#include <optional>

namespace wendrel {

class OperationCatalog;

struct RunOptions {
    QString entryId;
    QStringList files;                         // absolute paths, in the order given
    std::optional<QString> destinationFolder;  // --to
    bool json = false;
};

// `wendrel run ENTRY FILE...`: runs the entry through the job runner, exactly as the ring
// would, then prints the placed files (or the message) and returns the exit status.
int runRunCommand(const OperationCatalog& catalog, const RunOptions& options);

}  // namespace wendrel
