#pragma once

#include "FileOperation.h"

#include <QHash>
#include <QList>
#include <QString>
#include <QStringList>

#include <array>
#include <optional>

namespace wendrel {

// Every entry the rings can show, in the order users meet them on each ring.
//
// Each processing layer registers its own entries; the catalog keeps them in the fixed order
// of the rings whatever the order of registration, so the layout does not depend on which
// layer happened to register first. Entries unknown to that order follow, as registered.
class OperationCatalog {
public:
    // Adds an entry. An id that is already present replaces nothing and returns false.
    bool add(FileOperationPtr entry);

    // The entries of one ring, in ring order.
    const QList<FileOperationPtr>& entries(RingKind ring) const;

    // The entries of one ring that accept every one of the files.
    QList<FileOperationPtr> fitting(RingKind ring, const QStringList& paths) const;

    // The entry with this id on any ring, or null.
    FileOperationPtr find(const QString& id) const;

    // The check before a job, file by file in order: none when the entry takes every file,
    // otherwise the sentence the ring shows ("Compress doesn't work with this file").
    static std::optional<QString> refusal(const FileOperation& entry, const QStringList& paths);

private:
    std::array<QList<FileOperationPtr>, allRingKinds.size()> m_rings;
    QHash<QString, FileOperationPtr> m_byId;
};

}  // namespace wendrel
