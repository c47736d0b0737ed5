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
// whose answer counts even when it can't be stored.
TEST(EncoderProbeTest, CachedAnswerServesOnlyItsOwnStamp)
{
    QTemporaryDir folder;
    const QString cache = folder.filePath(QStringLiteral("wendrel/encoders"));
    const QList<ImageFormat> probed{ImageFormat::jpeg, ImageFormat::png};
    // Written under earlier libraries, which could write HEIC too.
    const QList<ImageFormat> earlier{ImageFormat::jpeg, ImageFormat::heic};
    cachedOrProbed(cache, "old", [&] { return earlier; });

    int probes = 0;
    struct Case {
        const char* what;
        QString file;
        QByteArray stamp;
        QList<ImageFormat> expected;
        int probesAfter;
    };
    const QList<Case> cases{
        {"the stamp it was written for", cache, "old", earlier, 0},
        {"libraries changed: probed again", cache, "new", probed, 1},
        {"the new answer is kept", cache, "new", probed, 1},
        {"a cache that can't be written", folder.filePath(QStringLiteral("wendrel/encoders/x")), "new", probed, 2},
    };
    for (const Case& step : cases) {
        EXPECT_EQ(cachedOrProbed(step.file, step.stamp, [&] { return ++probes, probed; }), step.expected) << step.what;
        EXPECT_EQ(probes, step.probesAfter) << step.what;
    }
    writeFile(cache, "{ not json");
    EXPECT_EQ(cachedOrProbed(cache, "new", [&] { return ++probes, probed; }), probed);
    EXPECT_EQ(probes, 3) << "a damaged cache is probed over";
}

// What a package manager does to a library folder changes the stamp.
TEST(EncoderProbeTest, FolderStampFollowsInstalledFiles)
{
    QTemporaryDir folder;
    const QString libraries = folder.filePath(QStringLiteral("lib"));
    const QString modules = libraries + QStringLiteral("/vips-modules");
    QDir().mkpath(modules);
    writeFile(modules + QStringLiteral("/vips-heif.so"), "module");
    const QStringList folders{libraries, modules, libraries + QStringLiteral("/plugins")};
    const auto stamp = [&] { return folderStamp(folders, {modules}); };
    EXPECT_EQ(stamp(), stamp());

    const QList<std::pair<const char*, std::function<void()>>> changes{
        {"a library installed", [&] { writeFile(libraries + QStringLiteral("/libx265.so.199"), "x265"); }},
        {"a module rewritten in place", [&] { writeFile(modules + QStringLiteral("/vips-heif.so"), "module, longer"); }},
        {"a plugin folder appears", [&] { QDir().mkpath(folders[2]); }},
        {"a library removed", [&] { QFile::remove(libraries + QStringLiteral("/libx265.so.199")); }},
    };
    for (const auto& [what, change] : changes) {
        const QByteArray before = stamp();
        // File times follow the kernel's clock tick: wait until a change made now gets a later
        // time than the folders have, as it would hours after a cache was written.
        const QDateTime latest = std::max(QFileInfo(libraries).lastModified(), QFileInfo(modules).lastModified());
        const QDeadlineTimer deadline(10'000);
        do {
            writeFile(folder.filePath(QStringLiteral("clock")), "tick");
        } while (QFileInfo(folder.filePath(QStringLiteral("clock"))).lastModified() <= latest && !deadline.hasExpired());
        change();
        EXPECT_NE(stamp(), before) << what;
    }
}

}  // namespace
