#include "media/MediaTestTools.h"
#include "media/MediaOperations.h"
#include "operations/JobExecution.h"
#include "operations/OperationCatalog.h"
#include "operations/OperationError.h"
#include "support/JobHarness.h"
#include "support/TestEnvironment.h"

#include <QCryptographicHash>
#include <QFileInfo>
#include <QJsonObject>
#include <QTemporaryDir>

#include <gtest/gtest.h>

using namespace wendrel;
using namespace wendrel::test;
using namespace Qt::StringLiterals;

namespace {

QByteArray digestOf(const QString& path)
{
    return QCryptographicHash::hash(readFile(path), QCryptographicHash::Sha256);
}

class VideoCompressTest : public ::testing::Test {
protected:
    void SetUp() override
    {
        registerMediaOperations(catalog);
        entry = catalog.find(u"video.compress"_s);
        ASSERT_TRUE(entry);
    }

    QString path(const QString& name) const { return folder.filePath(name); }

    // A phone-like clip: 640 × 360 stored, turned a quarter so it shows 360 × 640, 3 s at
    // 25 frames a second with sound, nearly lossless (so every compression shrinks it), with
    // a shooting date and place. The turn is set in a second, copying pass: the ffmpeg
    // program keeps it only on a copied stream.
    QString phoneClip(const QString& name)
    {
        const QString plain = path(u"plain-"_s + name);
        EXPECT_TRUE(makeMedia(plain, lavfi(u"testsrc2=size=640x360:rate=25:duration=3"_s) + lavfi(u"sine=duration=3"_s) +
                                         QStringList{u"-c:v"_s, u"libx264"_s, u"-preset"_s, u"ultrafast"_s, u"-crf"_s, u"8"_s,
                                                     u"-b:a"_s, u"192k"_s, u"-metadata"_s, u"creation_time=2021-06-01T12:00:00Z"_s,
                                                     u"-metadata"_s, u"location=+48.8584+002.2945/"_s}));
        const QString clip = path(name);
        EXPECT_TRUE(makeMedia(clip, {u"-i"_s, plain, u"-c"_s, u"copy"_s, u"-map_metadata"_s, u"0"_s, u"-metadata:s:v:0"_s, u"rotate=90"_s}));
        QFile::remove(plain);
        return clip;
    }

    JobReport compress(const QString& file, const QJsonObject& answers)
    {
        return runJob(runner, {.operation = entry, .paths = {file}, .answers = answers});
    }

    QTemporaryDir folder;
    OperationCatalog catalog;
    JobRunner runner;
    FileOperationPtr entry;
};

// Each setting shows in the result, and the shooting date, place and turn survive every one.
TEST_F(VideoCompressTest, ResultsAreSmallerInTheChosenCodecAndKeepDatePlaceAndTurn)
{
    const QString source = phoneClip(u"Beach.mov"_s);
    const ProbedMedia before = probeMedia(source);
    ASSERT_NE(before.first(u"video"_s).rotation, 0);
    const qint64 sourceBytes = QFileInfo(source).size();
    const QByteArray sourceDigest = digestOf(source);
    const struct {
        const char* what;
        QJsonObject answers;
        const char* codec;
        int width, height;  // as stored
        qint64 atMostBytes;
    } rows[] = {
        {"balanced H.264", {{u"mode"_s, u"quality"_s}, {u"quality"_s, u"balanced"_s}, {u"codec"_s, u"h264"_s}, {u"maxHeight"_s, 0}},
         "h264", 640, 360, sourceBytes / 2},
        {"small HEVC, 240 lines high as shown",
         {{u"mode"_s, u"quality"_s}, {u"quality"_s, u"small"_s}, {u"codec"_s, u"hevc"_s}, {u"maxHeight"_s, 240}},
         "hevc", 240, 135, sourceBytes / 4},
        {"to 150 kB", {{u"mode"_s, u"targetSize"_s}, {u"targetMB"_s, 0.15}, {u"codec"_s, u"h264"_s}, {u"maxHeight"_s, 0}},
         "h264", 640, 360, 150'000},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.what);
        const JobReport report = compress(source, row.answers);
        ASSERT_TRUE(report.succeeded) << report.message.toStdString();
        const QString result = report.results.value(0);
        EXPECT_EQ(result, path(u"Beach Compressed.mov"_s));
        const ProbedMedia after = probeMedia(result);
        const ProbedStream video = after.first(u"video"_s);
        EXPECT_EQ(video.codec, QString::fromUtf8(row.codec));
        EXPECT_NEAR(video.width, row.width, 1);
        EXPECT_NEAR(video.height, row.height, 1);
        EXPECT_EQ(video.rotation, before.first(u"video"_s).rotation);
        EXPECT_EQ(video.frames, before.first(u"video"_s).frames);
        EXPECT_EQ(after.first(u"audio"_s).codec, u"aac"_s);
        EXPECT_NEAR(after.duration, before.duration, 0.1);
        EXPECT_EQ(after.tags.value(u"creation_time"_s).left(19), u"2021-06-01T12:00:00");
        EXPECT_EQ(after.tags.value(u"location"_s), u"+48.8584+002.2945/"_s);
        EXPECT_EQ(after.tags.value(u"major_brand"_s).trimmed(), u"qt") << "still QuickTime";
        EXPECT_LE(QFileInfo(result).size(), row.atMostBytes);
        QFile::remove(result);
    }
    EXPECT_EQ(digestOf(source), sourceDigest);
    EXPECT_EQ(leftoverScratchFolders(), QStringList());
}

// What can't be done fails with its reason and leaves nothing beside the original; a
// cancelled job stops and leaves nothing either.
TEST_F(VideoCompressTest, FailuresAndCancellationLeaveOnlyTheOriginal)
{
    // Ten seconds of 60 frames a second can't fit 0.1 MB even at 240 lines.
    const QString busy = path(u"Busy.mp4"_s);
    ASSERT_TRUE(makeMedia(busy, lavfi(u"testsrc2=size=320x240:rate=60:duration=10"_s) << u"-c:v"_s << u"libx264"_s
                                                                                         << u"-preset"_s << u"ultrafast"_s));
    const QString text = path(u"Notes.mp4"_s);
    writeFile(text, "not a movie at all\n");
    const QJsonObject tiny{{u"mode"_s, u"targetSize"_s}, {u"targetMB"_s, 0.1}};
    const struct {
        QString file;
        QJsonObject answers;
        const char* message;
    } rows[] = {
        {busy, tiny, "Can't make this video that small"},
        {text, {{u"mode"_s, u"quality"_s}}, "Can't read this file"},
    };
    for (const auto& row : rows) {
        const QByteArray digest = digestOf(row.file);
        const JobReport report = compress(row.file, row.answers);
        EXPECT_FALSE(report.succeeded);
        EXPECT_EQ(report.failures.value(0).message, QString::fromUtf8(row.message)) << row.message;
        EXPECT_EQ(digestOf(row.file), digest);
    }

    const QString clip = phoneClip(u"Clip.mp4"_s);
    auto cancelled = std::make_shared<std::atomic_bool>(false);
    std::atomic<double> furthest = 0;  // before the job's own closing 1
    const JobReport report = executeJob({.operation = entry, .paths = {clip}, .answers = tiny}, cancelled,
                                        [&](double fraction) {
                                            if (fraction < 1)
                                                furthest = std::max(furthest.load(), fraction);
                                            if (fraction > 0.2)
                                                *cancelled = true;
                                        });
    EXPECT_EQ(report.message, OperationCancelled().message());
    EXPECT_GT(furthest.load(), 0.2);
    EXPECT_LT(furthest.load(), 0.5) << "stopped within the first attempt";
    EXPECT_EQ(folderEntries(folder.path()), (QStringList{u"Busy.mp4"_s, u"Clip.mp4"_s, u"Notes.mp4"_s}));
    EXPECT_EQ(leftoverScratchFolders(), QStringList());
}

}  // namespace
