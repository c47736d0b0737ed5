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

// Undo trashes the latest job's results only: folders whole, files gone in the meantime
// skipped silently; a second undo does nothing, even to a new file under the same name.
TEST_F(UndoStoreTest, UndoTrashesOnlyTheLatestJobsResultsOnce)
{
    const QString earlier = file("earlier.jpg");
    const QString latest = file("latest 1.jpg");
    writeFile(folder.filePath(QStringLiteral("Pages/1.png")), "page");
    store.record({earlier});
    store.record({latest, folder.filePath(QStringLiteral("deleted.jpg")), folder.filePath(QStringLiteral("Pages"))});

    EXPECT_EQ(store.undo(), std::nullopt);
    EXPECT_TRUE(QFileInfo::exists(earlier));
    EXPECT_FALSE(QFileInfo::exists(latest));
    EXPECT_FALSE(QFileInfo::exists(folder.filePath(QStringLiteral("Pages"))));
    EXPECT_EQ(trashedNames(), (QStringList{QStringLiteral("Pages"), QStringLiteral("latest 1.jpg")}));

    writeFile(latest, "a new file under the same name");
    EXPECT_EQ(store.undo(), std::nullopt);
    EXPECT_TRUE(QFileInfo::exists(latest));
    EXPECT_TRUE(store.lastResults().isEmpty());
}
