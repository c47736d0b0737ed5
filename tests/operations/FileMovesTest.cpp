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

TEST(MoveWithoutReplacing, MovesFilesAndFolders)
{
    QTemporaryDir folder;
    writeFile(folder.filePath(QStringLiteral("scratch/result.txt")), "result");
    writeFile(folder.filePath(QStringLiteral("scratch/pages/1.txt")), "page");

    EXPECT_EQ(moveWithoutReplacing(folder.filePath(QStringLiteral("scratch/result.txt")),
                                   folder.filePath(QStringLiteral("result.txt")))
                  .result,
              MoveAttempt::Result::moved);
    EXPECT_EQ(moveWithoutReplacing(folder.filePath(QStringLiteral("scratch/pages")),
                                   folder.filePath(QStringLiteral("pages")))
                  .result,
              MoveAttempt::Result::moved);
    EXPECT_EQ(readFile(folder.filePath(QStringLiteral("result.txt"))), "result");
    EXPECT_EQ(readFile(folder.filePath(QStringLiteral("pages/1.txt"))), "page");
}

TEST(MoveWithoutReplacing, NeverReplacesAnExistingFileOrFolder)
{
    QTemporaryDir folder;
    writeFile(folder.filePath(QStringLiteral("new.txt")), "new");
    writeFile(folder.filePath(QStringLiteral("old.txt")), "old");
    QDir(folder.path()).mkdir(QStringLiteral("taken"));

    EXPECT_EQ(moveWithoutReplacing(folder.filePath(QStringLiteral("new.txt")),
                                   folder.filePath(QStringLiteral("old.txt")))
                  .result,
              MoveAttempt::Result::destinationTaken);
    EXPECT_EQ(moveWithoutReplacing(folder.filePath(QStringLiteral("new.txt")),
                                   folder.filePath(QStringLiteral("taken")))
                  .result,
              MoveAttempt::Result::destinationTaken);
    EXPECT_EQ(readFile(folder.filePath(QStringLiteral("old.txt"))), "old");
    EXPECT_EQ(readFile(folder.filePath(QStringLiteral("new.txt"))), "new");
}

TEST(MoveWithoutReplacing, BrokenLinkCountsAsTaken)
{
    QTemporaryDir folder;
    writeFile(folder.filePath(QStringLiteral("new.txt")), "new");
    QFile::link(folder.filePath(QStringLiteral("nowhere")), folder.filePath(QStringLiteral("link")));
    EXPECT_TRUE(itemExists(folder.filePath(QStringLiteral("link"))));
    EXPECT_EQ(moveWithoutReplacing(folder.filePath(QStringLiteral("new.txt")),
                                   folder.filePath(QStringLiteral("link")))
                  .result,
              MoveAttempt::Result::destinationTaken);
}

TEST(MoveWithoutReplacing, MissingDestinationFolderFailsWithTheSystemReason)
{
    QTemporaryDir folder;
    writeFile(folder.filePath(QStringLiteral("new.txt")), "new");
    const MoveAttempt attempt = moveWithoutReplacing(folder.filePath(QStringLiteral("new.txt")),
                                                     folder.filePath(QStringLiteral("gone/new.txt")));
    EXPECT_EQ(attempt.result, MoveAttempt::Result::failed);
    EXPECT_FALSE(attempt.error.isEmpty());
}

// Scratch space often lives on another file system (tmpfs) than the user's files; the move
// then copies, and must neither leave a partial file behind nor replace anything.
class MoveAcrossFileSystems : public ::testing::Test {
protected:
    void SetUp() override
    {
        struct stat shm {}, tmp {};
        const QByteArray tmpPath = QFile::encodeName(test::scratchParent());
        if (::stat("/dev/shm", &shm) != 0 || ::stat(tmpPath.constData(), &tmp) != 0
            || shm.st_dev == tmp.st_dev || ::access("/dev/shm", W_OK) != 0)
            GTEST_SKIP() << "needs /dev/shm on a file system of its own";
        other = std::make_unique<QTemporaryDir>(QStringLiteral("/dev/shm/wendrel-test-XXXXXX"));
        ASSERT_TRUE(other->isValid());
    }

    std::unique_ptr<QTemporaryDir> other;
    QTemporaryDir here;
};

TEST_F(MoveAcrossFileSystems, CopiesFileAndFolderCompletely)
{
    writeFile(other->filePath(QStringLiteral("result.bin")), QByteArray(3'000'000, 'x'));
    writeFile(other->filePath(QStringLiteral("pages/a/1.txt")), "one");
    EXPECT_EQ(moveWithoutReplacing(other->filePath(QStringLiteral("result.bin")),
                                   here.filePath(QStringLiteral("result.bin")))
                  .result,
              MoveAttempt::Result::moved);
    EXPECT_EQ(moveWithoutReplacing(other->filePath(QStringLiteral("pages")),
                                   here.filePath(QStringLiteral("pages")))
                  .result,
              MoveAttempt::Result::moved);
    EXPECT_EQ(readFile(here.filePath(QStringLiteral("result.bin"))), QByteArray(3'000'000, 'x'));
    EXPECT_EQ(readFile(here.filePath(QStringLiteral("pages/a/1.txt"))), "one");
    EXPECT_EQ(folderEntries(here.path()), (QStringList{QStringLiteral("pages"), QStringLiteral("result.bin")}));
}

TEST_F(MoveAcrossFileSystems, TakenNameLeavesNoPartialCopy)
{
    writeFile(other->filePath(QStringLiteral("result.txt")), "new");
    writeFile(here.filePath(QStringLiteral("result.txt")), "old");
    EXPECT_EQ(moveWithoutReplacing(other->filePath(QStringLiteral("result.txt")),
                                   here.filePath(QStringLiteral("result.txt")))
                  .result,
              MoveAttempt::Result::destinationTaken);
    EXPECT_EQ(readFile(here.filePath(QStringLiteral("result.txt"))), "old");
    EXPECT_EQ(folderEntries(here.path()), QStringList{QStringLiteral("result.txt")});
}
