#include "VideoTestTools.h"
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
        EXPECT_TRUE(makeClip(plain, {u"-f"_s, u"lavfi"_s, u"-i"_s, u"testsrc2=size=640x360:rate=25:duration=3"_s,
                                      u"-f"_s, u"lavfi"_s, u"-i"_s, u"sine=frequency=440:duration=3"_s,
                                      u"-c:v"_s, u"libx264"_s, u"-preset"_s, u"ultrafast"_s, u"-crf"_s, u"8"_s,
                                      u"-c:a"_s, u"aac"_s, u"-b:a"_s, u"192k"_s,
                                      u"-metadata"_s, u"creation_time=2021-06-01T12:00:00Z"_s,
                                      u"-metadata"_s, u"location=+48.8584+002.2945/"_s}));
        const QString clip = path(name);
        EXPECT_TRUE(makeClip(clip, {u"-i"_s, plain, u"-c"_s, u"copy"_s, u"-map_metadata"_s, u"0"_s,
                                     u"-metadata:s:v:0"_s, u"rotate=90"_s}));
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
    const QJsonObject before = probe(source);
    const int turn = rotationOf(streamOf(before, u"video"_s));
    ASSERT_NE(turn, 0);
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
    const auto number = [](const QJsonValue& value) { return value.toString().toDouble(); };
    for (const auto& row : rows) {
        const JobReport report = compress(source, row.answers);
        ASSERT_TRUE(report.succeeded) << row.what << ": " << report.message.toStdString();
        const QString result = report.results.value(0);
        EXPECT_EQ(result, path(u"Beach Compressed.mov"_s)) << row.what;
        const QJsonObject after = probe(result);
        const QJsonObject video = streamOf(after, u"video"_s);
        const QJsonObject tags = after[u"format"_s][u"tags"_s].toObject();
        EXPECT_EQ(video[u"codec_name"_s], QString::fromUtf8(row.codec)) << row.what;
        EXPECT_NEAR(video[u"width"_s].toInt(), row.width, 1) << row.what;
        EXPECT_NEAR(video[u"height"_s].toInt(), row.height, 1) << row.what;
        EXPECT_EQ(rotationOf(video), turn) << row.what;
        EXPECT_EQ(video[u"nb_frames"_s], streamOf(before, u"video"_s)[u"nb_frames"_s]) << row.what;
        EXPECT_EQ(streamOf(after, u"audio"_s)[u"codec_name"_s], u"aac"_s) << row.what;
        EXPECT_NEAR(number(after[u"format"_s][u"duration"_s]), number(before[u"format"_s][u"duration"_s]), 0.1) << row.what;
        EXPECT_EQ(tags[u"creation_time"_s].toString().left(19), u"2021-06-01T12:00:00") << row.what;
        EXPECT_EQ(tags[u"location"_s], u"+48.8584+002.2945/"_s) << row.what;
        EXPECT_EQ(tags[u"major_brand"_s].toString().trimmed(), u"qt") << row.what << ": still QuickTime";
        EXPECT_LE(QFileInfo(result).size(), row.atMostBytes) << row.what;
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
    ASSERT_TRUE(makeClip(busy, {u"-f"_s, u"lavfi"_s, u"-i"_s, u"testsrc2=size=320x240:rate=60:duration=10"_s,
                                 u"-c:v"_s, u"libx264"_s, u"-preset"_s, u"ultrafast"_s}));
    const QString text = path(u"Notes.mp4"_s);
    writeFile(text, "not a movie at all\n");
    const QJsonObject tiny{{u"mode"_s, u"targetSize"_s}, {u"targetMB"_s, 0.1}};
    const struct {
        QString file;
        QJsonObject answers;
        const char* message;
    } rows[] = {
        {busy, tiny, "Can't make this video that small"},
        {text, tiny, "Can't read this file"},
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
