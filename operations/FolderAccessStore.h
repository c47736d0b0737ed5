#pragma once

#include <QObject>
#include <QStringList>

namespace wendrel {

// The folders the user has allowed Wendrel to write results into, in the order granted.
//
// Linux has no sandbox scopes, so a grant is the folder's absolute path, stored under
// "grantedFolderBookmarks" as a JSON array. The list tells the settings window what to show;
// results go next to their originals wherever the system lets them, and elsewhere to
// Downloads/Wendrel.
class FolderAccessStore : public QObject {
    Q_OBJECT

public:
    static QString defaultsKey() { return QStringLiteral("grantedFolderBookmarks"); }

    using QObject::QObject;

    const QStringList& folders() const { return m_folders; }

    // Reads the stored grants. A folder that no longer exists is left out of the list but kept
    // in storage, so a drive that is merely unplugged keeps its grant for when it returns.
    void load();

    // Adds a folder the user chose (the dialog belongs to the settings window) and saves.
    void grant(const QString& folder);

    // Removes every entry equal to `folder` and saves.
    void remove(const QString& folder);

Q_SIGNALS:
    void foldersChanged();

private:
    void save();

    QStringList m_folders;
    QStringList m_unavailable;  // stored grants whose folders are missing right now
};

}  // namespace wendrel
