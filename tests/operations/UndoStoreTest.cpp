#include "operations/UndoStore.h"

#include "support/TestEnvironment.h"

#include <QDir>
#include <QFileInfo>
#include <QStandardPaths>
#include <QTemporaryDir>

#include <gtest/gtest.h>

using namespace wendrel;
using test::writeFile;

namespace {

// Names in the freedesktop Trash of the private home.
QStringList trashedNames()
{
    const QString trash = QStandardPaths::writableLocation(QStandardPaths::GenericDataLocation)
                          + QStringLiteral("/Trash/files");
    return QDir(trash).entryList(QDir::AllEntries | QDir::NoDotAndDotDot, QDir::Name);
}

class UndoStoreTest : public ::testing::Test {
protected:
    void TearDown() override
    {
        QDir(QStandardPaths::writableLocation(QStandardPaths::GenericDataLocation)
             + QStringLiteral("/Trash"))
            .removeRecursively();
    }

    QString file(const char* name)
    {
        const QString path = folder.filePath(QString::fromUtf8(name));
        writeFile(path, name);
        return path;
    }

    QTemporaryDir folder;
    UndoStore store;
};

}  // namespace

TEST_F(UndoStoreTest, UndoTrashesOnlyTheLatestJobsResults)
{
    const QString earlier = file("earlier.jpg");
    const QString latest1 = file("latest 1.jpg");
    const QString latest2 = file("latest 2.jpg");
    store.record({earlier});
    store.record({latest1, latest2});

    EXPECT_EQ(store.undo(), std::nullopt);
    EXPECT_TRUE(QFileInfo::exists(earlier));
    EXPECT_FALSE(QFileInfo::exists(latest1));
    EXPECT_FALSE(QFileInfo::exists(latest2));
    EXPECT_EQ(trashedNames(), (QStringList{QStringLiteral("latest 1.jpg"), QStringLiteral("latest 2.jpg")}));
}

TEST_F(UndoStoreTest, SecondUndoDoesNothing)
{
    const QString result = file("result.jpg");
    store.record({result});
    EXPECT_EQ(store.undo(), std::nullopt);
    writeFile(result, "a new file under the same name");
    EXPECT_EQ(store.undo(), std::nullopt);
    EXPECT_TRUE(QFileInfo::exists(result));
    EXPECT_TRUE(store.lastResults().isEmpty());
}

TEST_F(UndoStoreTest, FilesGoneInTheMeantimeAreSkippedSilently)
{
    const QString kept = file("kept.jpg");
    store.record({folder.filePath(QStringLiteral("deleted.jpg")), kept});
    EXPECT_EQ(store.undo(), std::nullopt);
    EXPECT_EQ(trashedNames(), QStringList{QStringLiteral("kept.jpg")});
}

TEST_F(UndoStoreTest, ResultFoldersGoToTheTrashWhole)
{
    writeFile(folder.filePath(QStringLiteral("Pages/1.png")), "page");
    store.record({folder.filePath(QStringLiteral("Pages"))});
    EXPECT_EQ(store.undo(), std::nullopt);
    EXPECT_FALSE(QFileInfo::exists(folder.filePath(QStringLiteral("Pages"))));
    EXPECT_EQ(trashedNames(), QStringList{QStringLiteral("Pages")});
}
