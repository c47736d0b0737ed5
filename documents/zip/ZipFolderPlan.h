#pragma once

#include <QByteArray>
#include <QDateTime>
#include <QList>

#include <functional>
#include <optional>
#include <utility>

namespace wendrel {

// What packing needs to know of one item, links followed.
struct ItemFacts {
    enum class Kind { missing, file, folder, other };
    Kind kind = Kind::missing;
    // Tells one folder from another whatever the path that leads to it (device and inode).
    std::pair<quint64, quint64> identity{};
    qint64 size = 0;
    QDateTime modified;
    bool readable = true;  // for folders: whether their names can be listed
};

// The file system as the planner sees it. Paths and names are the system's bytes, so names
// that are not UTF-8 pass through unchanged.
struct FolderView {
    std::function<ItemFacts(const QByteArray& path)> inspect;
    // Every name in the folder but "." and "..", in any order.
    std::function<QList<QByteArray>(const QByteArray& folder)> names;
};

// The real disk.
FolderView diskView();

struct PlannedItem {
    QByteArray name;        // the entry's name, "/" between folders and after a folder's
    QByteArray sourcePath;  // the file whose contents go in; empty for a folder
    qint64 size = 0;
    QDateTime modified;     // invalid for a folder, which takes the time it is packed
};

// The entries that pack the item at `path` as `name`: a file as one entry, a folder as its
// own entry followed by everything in it. Inside folders, hidden items and what is neither
// file nor folder (broken links, sockets, pipes, devices: reading a pipe could wait forever)
// are left out, children come in the byte order of their names, and a link that leads back
// up to a folder being packed is not followed, which would make the archive endless. Throws
// OperationError naming the item when the item itself is missing or of another kind, or a
// folder can't be listed.
QList<PlannedItem> planItem(const FolderView& view, const QByteArray& path, const QByteArray& name);

}  // namespace wendrel
