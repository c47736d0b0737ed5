#include "ZipFolderPlan.h"

#include <dirent.h>
#include <sys/stat.h>
#include <unistd.h>

namespace wendrel {

namespace {

ItemFacts inspectOnDisk(const QByteArray& path)
{
    ItemFacts facts;
    struct stat status {};
    if (::stat(path.constData(), &status) != 0)
        return facts;  // absent, or a link that leads nowhere
    facts.identity = {status.st_dev, status.st_ino};
    if (S_ISDIR(status.st_mode)) {
        facts.kind = ItemFacts::Kind::folder;
        facts.readable = ::access(path.constData(), R_OK | X_OK) == 0;
    } else if (S_ISREG(status.st_mode)) {
        facts.kind = ItemFacts::Kind::file;
        facts.size = status.st_size;
        facts.modified = QDateTime::fromMSecsSinceEpoch(
            qint64(status.st_mtim.tv_sec) * 1000 + status.st_mtim.tv_nsec / 1'000'000);
    } else {
        facts.kind = ItemFacts::Kind::other;
    }
    return facts;
}

QList<QByteArray> namesOnDisk(const QByteArray& folder)
{
    QList<QByteArray> names;
    DIR* listing = ::opendir(folder.constData());
    if (!listing)
        return names;
    while (const dirent* item = ::readdir(listing)) {
        const QByteArray name(item->d_name);
        if (name != "." && name != "..")
            names.append(name);
    }
    ::closedir(listing);
    return names;
}

}  // namespace

FolderView diskView() { return {.inspect = inspectOnDisk, .names = namesOnDisk}; }

}  // namespace wendrel
