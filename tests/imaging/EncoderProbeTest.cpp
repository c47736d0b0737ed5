#include "imaging/EncoderProbe.h"
#include "support/TestEnvironment.h"

#include <QDateTime>
#include <QDeadlineTimer>
#include <QDir>
#include <QFileInfo>
#include <QTemporaryDir>

#include <gtest/gtest.h>

using namespace wendrel;
using namespace wendrel::test;

namespace {

// The cache is trusted only with the stamp it was written for; anything else asks the probe,
// and the probe's answer is what counts even when it can't be stored.
TEST(EncoderProbeTest, CachedAnswerServesOnlyItsOwnStamp)
{
    QTemporaryDir folder;
    const QString cache = folder.filePath(QStringLiteral("wendrel/encoders"));
    const QList<ImageFormat> probed{ImageFormat::jpeg, ImageFormat::png};
    int probes = 0;
    const auto probe = [&] {
        ++probes;
        return probed;
    };
    // Written by an earlier run, under libraries that could write HEIC and AVIF too.
    const QList<ImageFormat> earlier{ImageFormat::jpeg, ImageFormat::png, ImageFormat::heic, ImageFormat::avif};
    ASSERT_EQ(cachedOrProbed(cache, "old libraries", [&] { return earlier; }), earlier);

    struct Case {
        const char* what;
        QByteArray stamp;
        QList<ImageFormat> expected;
        int probesAfter;
    };
    const QList<Case> cases{
        {"the stamp it was written for", "old libraries", earlier, 0},
        {"libraries changed: probed again", "new libraries", probed, 1},
        {"the new answer is kept", "new libraries", probed, 1},
    };
    for (const Case& step : cases)
        EXPECT_EQ(cachedOrProbed(cache, step.stamp, probe), step.expected) << step.what;
    EXPECT_EQ(probes, 1);

    writeFile(cache, "{ not json");
    EXPECT_EQ(cachedOrProbed(cache, "new libraries", probe), probed);
    EXPECT_EQ(probes, 2) << "a damaged cache is probed over";

    writeFile(folder.filePath(QStringLiteral("file")), "a file where a folder should be");
    EXPECT_EQ(cachedOrProbed(folder.filePath(QStringLiteral("file/encoders")), "new libraries", probe), probed);
}

// File times advance with the kernel's clock tick, not every nanosecond: waits until a change
// made now gets a later time than `folders` have, as it would hours after a cache was written.
void waitForTheClockToPass(const QString& scratch, const QStringList& folders)
{
    QDateTime latest;
    for (const QString& folder : folders)
        latest = std::max(latest, QFileInfo(folder).lastModified());
    const QString marker = QDir(scratch).filePath(QStringLiteral("clock"));
    QDeadlineTimer deadline(10'000);
    do {
        writeFile(marker, "tick");
    } while (QFileInfo(marker).lastModified() <= latest && !deadline.hasExpired());
}

// What a package manager does to a library folder changes the stamp; nothing else does.
TEST(EncoderProbeTest, FolderStampFollowsInstalledFiles)
{
    QTemporaryDir folder;
    const QString libraries = folder.filePath(QStringLiteral("lib"));
    const QString modules = folder.filePath(QStringLiteral("lib/vips-modules"));
    QDir().mkpath(modules);
    writeFile(modules + QStringLiteral("/vips-heif.so"), "module");
    const QStringList folders{libraries, modules, folder.filePath(QStringLiteral("lib/plugins"))};
    const auto stamp = [&] { return folderStamp(folders, {modules}); };

    const QByteArray first = stamp();
    EXPECT_EQ(stamp(), first);
    const QList<std::pair<const char*, std::function<void()>>> changes{
        {"a library installed", [&] { writeFile(libraries + QStringLiteral("/libx265.so.199"), "x265"); }},
        {"a module rewritten in place", [&] { writeFile(modules + QStringLiteral("/vips-heif.so"), "module, longer"); }},
        {"a plugin folder appears", [&] { QDir().mkpath(folders[2]); }},
        {"a library removed", [&] { QFile::remove(libraries + QStringLiteral("/libx265.so.199")); }},
    };
    QByteArray before;
    for (const auto& [what, change] : changes) {
        before = stamp();
        waitForTheClockToPass(folder.path(), folders);
        change();
        EXPECT_NE(stamp(), before) << what;
    }
}

}  // namespace
