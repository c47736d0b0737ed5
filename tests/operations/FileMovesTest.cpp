#include "operations/FileMoves.h"

#include "support/TestEnvironment.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>
#include <sys/stat.h>

using namespace wendrel;
using test::folderEntries;
using test::readFile;
using test::writeFile;
using Result = MoveAttempt::Result;

// Files and folders move; an existing file, folder or even a broken link at the destination is
// never replaced, and both sides stay as they were.
TEST(MoveWithoutReplacing, MovesButNeverReplaces)
{
    QTemporaryDir folder;
    const auto at = [&](const char* name) { return folder.filePath(QString::fromUtf8(name)); };
    writeFile(at("scratch/result.txt"), "result");
    writeFile(at("scratch/pages/1.txt"), "page");
    writeFile(at("new.txt"), "new");
    writeFile(at("old.txt"), "old");
    QDir(folder.path()).mkdir(QStringLiteral("taken"));
    QFile::link(at("nowhere"), at("link"));
    EXPECT_TRUE(itemExists(at("link")));

    const struct {
        const char* from;
        const char* to;
        Result expected;
    } rows[] = {{"scratch/result.txt", "result.txt", Result::moved}, {"scratch/pages", "pages", Result::moved},
                {"new.txt", "old.txt", Result::destinationTaken},    {"new.txt", "taken", Result::destinationTaken},
                {"new.txt", "link", Result::destinationTaken}};
    for (const auto& row : rows)
        EXPECT_EQ(moveWithoutReplacing(at(row.from), at(row.to)).result, row.expected) << row.from << " to " << row.to;
    EXPECT_EQ(readFile(at("result.txt")), "result");
    EXPECT_EQ(readFile(at("pages/1.txt")), "page");
    EXPECT_EQ(readFile(at("old.txt")), "old");
    EXPECT_EQ(readFile(at("new.txt")), "new");

    const MoveAttempt attempt = moveWithoutReplacing(at("new.txt"), at("gone/new.txt"));
    EXPECT_EQ(attempt.result, Result::failed);
    EXPECT_FALSE(attempt.error.isEmpty()) << "the system's reason";
}

// Scratch space often lives on another file system (tmpfs) than the user's files; the move
// then copies, and must neither leave a partial file behind nor replace anything.
TEST(MoveWithoutReplacing, AcrossFileSystemsCopiesCompletelyOrLeavesNothing)
{
    struct stat shm {}, tmp {};
    const QByteArray tmpPath = QFile::encodeName(test::scratchParent());
    if (::stat("/dev/shm", &shm) != 0 || ::stat(tmpPath.constData(), &tmp) != 0 || shm.st_dev == tmp.st_dev
        || ::access("/dev/shm", W_OK) != 0)
        GTEST_SKIP() << "needs /dev/shm on a file system of its own";
    QTemporaryDir other(QStringLiteral("/dev/shm/wendrel-test-XXXXXX"));
    ASSERT_TRUE(other.isValid());
    QTemporaryDir here;
    const auto move = [&](const char* name) {
        const QString relative = QString::fromUtf8(name);
        return moveWithoutReplacing(other.filePath(relative), here.filePath(relative)).result;
    };
    writeFile(other.filePath(QStringLiteral("result.bin")), QByteArray(3'000'000, 'x'));
    writeFile(other.filePath(QStringLiteral("pages/a/1.txt")), "one");
    writeFile(other.filePath(QStringLiteral("taken.txt")), "new");
    writeFile(here.filePath(QStringLiteral("taken.txt")), "old");

    EXPECT_EQ(move("result.bin"), Result::moved);
    EXPECT_EQ(move("pages"), Result::moved);
    EXPECT_EQ(move("taken.txt"), Result::destinationTaken);
    EXPECT_EQ(readFile(here.filePath(QStringLiteral("result.bin"))), QByteArray(3'000'000, 'x'));
    EXPECT_EQ(readFile(here.filePath(QStringLiteral("pages/a/1.txt"))), "one");
    EXPECT_EQ(readFile(here.filePath(QStringLiteral("taken.txt"))), "old");
    EXPECT_EQ(folderEntries(here.path()),
              (QStringList{QStringLiteral("pages"), QStringLiteral("result.bin"), QStringLiteral("taken.txt")}));
}
