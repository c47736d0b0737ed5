#include "FileMoves.h"

#include <QFile>
#include <QFileInfo>
#include <QUuid>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <fcntl.h>
#include <filesystem>
#include <sys/stat.h>
#include <unistd.h>

namespace wendrel {

namespace {

namespace fs = std::filesystem;

fs::path toPath(const QString& path) { return fs::path(QFile::encodeName(path).toStdString()); }

QString systemError(int code) { return QString::fromLocal8Bit(std::strerror(code)); }

// rename(2) that fails with EEXIST instead of replacing. File systems without RENAME_NOREPLACE
// get link + unlink for files, which is just as atomic, and a checked rename for folders.
int renameWithoutReplacing(const QByteArray& from, const QByteArray& to)
{
    if (::renameat2(AT_FDCWD, from.constData(), AT_FDCWD, to.constData(), RENAME_NOREPLACE) == 0)
        return 0;
    if (errno != EINVAL && errno != ENOSYS)
        return errno;

    struct stat info {};
    if (::lstat(from.constData(), &info) != 0)
        return errno;
    if (S_ISDIR(info.st_mode)) {
        if (::lstat(to.constData(), &info) == 0)
            return EEXIST;
        return ::rename(from.constData(), to.constData()) == 0 ? 0 : errno;
    }
    if (::link(from.constData(), to.constData()) != 0)
        return errno;
    ::unlink(from.constData());
    return 0;
}

MoveAttempt copyAcrossFileSystems(const QString& from, const QString& destination)
{
    const QString partial = QFileInfo(destination).absolutePath() + QStringLiteral("/.wendrel-")
                            + QUuid::createUuid().toString(QUuid::WithoutBraces)
                            + QStringLiteral(".part");
    std::error_code error;
    fs::copy(toPath(from), toPath(partial),
             fs::copy_options::recursive | fs::copy_options::copy_symlinks, error);
    if (error) {
        removeItem(partial);
        return {MoveAttempt::Result::failed, QString::fromLocal8Bit(error.message())};
    }
    const int renameError = renameWithoutReplacing(QFile::encodeName(partial),
                                                   QFile::encodeName(destination));
    if (renameError != 0) {
        removeItem(partial);
        if (renameError == EEXIST)
            return {MoveAttempt::Result::destinationTaken, {}};
        return {MoveAttempt::Result::failed, systemError(renameError)};
    }
    removeItem(from);
    return {MoveAttempt::Result::moved, {}};
}

}  // namespace

bool itemExists(const QString& path)
{
    struct stat info {};
    return ::lstat(QFile::encodeName(path).constData(), &info) == 0;
}

MoveAttempt moveWithoutReplacing(const QString& from, const QString& destination)
{
    const int error = renameWithoutReplacing(QFile::encodeName(from), QFile::encodeName(destination));
    if (error == 0)
        return {MoveAttempt::Result::moved, {}};
    if (error == EEXIST || error == ENOTEMPTY)
        return {MoveAttempt::Result::destinationTaken, {}};
    if (error == EXDEV)
        return copyAcrossFileSystems(from, destination);
    return {MoveAttempt::Result::failed, systemError(error)};
}

void removeItem(const QString& path)
{
    std::error_code ignored;
    fs::remove_all(toPath(path), ignored);
}

}  // namespace wendrel
