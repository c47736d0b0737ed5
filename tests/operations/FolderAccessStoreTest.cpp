#include "operations/FolderAccessStore.h"

#include "operations/settings/SettingsStore.h"

#include <QDir>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QTemporaryDir>

#include <gtest/gtest.h>

using namespace wendrel;

namespace {

class FolderAccessStoreTest : public ::testing::Test {
protected:
    void SetUp() override { QFile::remove(SettingsStore::filePath()); }
    void TearDown() override { QFile::remove(SettingsStore::filePath()); }

    QString makeFolder(const char* name)
    {
        const QString path = root.filePath(QString::fromUtf8(name));
        QDir().mkpath(path);
        return path;
    }

    QTemporaryDir root;
};

}  // namespace

TEST_F(FolderAccessStoreTest, GrantsSurviveARestartInTheOrderGranted)
{
    const QString photos = makeFolder("Photos");
    const QString work = makeFolder("Work");
    {
        FolderAccessStore store;
        store.load();
        store.grant(work);
        store.grant(photos);
        store.grant(work + QStringLiteral("/"));  // the same folder again
    }
    FolderAccessStore restarted;
    restarted.load();
    EXPECT_EQ(restarted.folders(), (QStringList{work, photos}));
}

TEST_F(FolderAccessStoreTest, MissingFolderIsDroppedAtLoadButItsGrantIsKept)
{
    const QString drive = makeFolder("Drive");
    const QString home = makeFolder("Home");
    FolderAccessStore store;
    store.load();
    store.grant(drive);
    store.grant(home);

    QDir(drive).removeRecursively();  // unplugged
    store.load();
    EXPECT_EQ(store.folders(), QStringList{home});

    store.grant(makeFolder("Music"));  // saving must not forget the unplugged drive
    QDir().mkpath(drive);              // plugged back in
    store.load();
    EXPECT_EQ(store.folders(), (QStringList{home, root.filePath(QStringLiteral("Music")), drive}));
}

TEST_F(FolderAccessStoreTest, RemovedOrDamagedMeansForgotten)
{
    const QString photos = makeFolder("Photos");
    FolderAccessStore store;
    store.load();
    store.grant(photos);
    store.remove(photos);
    store.load();
    EXPECT_TRUE(store.folders().isEmpty());
    const QJsonArray stored =
        QJsonDocument::fromJson(SettingsStore::text(FolderAccessStore::defaultsKey())->toUtf8()).array();
    EXPECT_TRUE(stored.isEmpty());

    store.grant(photos);
    SettingsStore::setText(FolderAccessStore::defaultsKey(), QStringLiteral("{not json"));
    store.load();
    EXPECT_TRUE(store.folders().isEmpty()) << "a damaged stored value means no folders";
}
