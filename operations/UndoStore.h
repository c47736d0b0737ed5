#pragma once

#include <QObject>
#include <QStringList>

#include <optional>

namespace wendrel {

// The files the latest job placed, so "Undo Last Result" can move them to the Trash.
// Kept in memory only: after a restart there is nothing to undo.
class UndoStore : public QObject {
    Q_OBJECT

public:
    using QObject::QObject;

    const QStringList& lastResults() const { return m_lastResults; }

    // Replaces the remembered results with those of the job that just placed files.
    void record(const QStringList& paths);

    // Moves the remembered results that still exist to the Trash, never deleting anything
    // outright, and forgets them first so a second undo does nothing. Returns the system's
    // message when a file could not be trashed; the others are trashed all the same.
    [[nodiscard]] std::optional<QString> undo();

Q_SIGNALS:
    void lastResultsChanged();

private:
    QStringList m_lastResults;
};

}  // namespace wendrel
