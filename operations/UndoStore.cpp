#include "UndoStore.h"

#include "FileMoves.h"
#include "Logging.h"

#include <QCoreApplication>
#include <QFile>

namespace wendrel {

void UndoStore::record(const QStringList& paths)
{
    m_lastResults = paths;
    Q_EMIT lastResultsChanged();
}

std::optional<QString> UndoStore::undo()
{
    QStringList existing;
    for (const QString& path : std::as_const(m_lastResults)) {
        if (itemExists(path))
            existing.append(path);
    }
    m_lastResults.clear();
    Q_EMIT lastResultsChanged();

    std::optional<QString> error;
    for (const QString& path : std::as_const(existing)) {
        if (!QFile::moveToTrash(path)) {
            qCWarning(lcJobs, "undo: can't move %s to the Trash", qUtf8Printable(path));
            error = QCoreApplication::translate("UndoStore", "Couldn't move %1 to the Trash")
                        .arg(path);
        }
    }
    return error;
}

}  // namespace wendrel
