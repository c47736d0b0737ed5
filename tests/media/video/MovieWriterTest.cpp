#include "VideoTestTools.h"
#include "media/MediaOperations.h"
#include "media/video/MovieWriter.h"
#include "operations/JobRunner.h"
#include "operations/OperationCatalog.h"
#include "operations/OperationContext.h"
#include "operations/OperationError.h"
#include "support/JobHarness.h"
#include "support/TestEnvironment.h"

#include <QFileInfo>
#include <QtEndian>
#include <QJsonArray>
#include <QTemporaryDir>

#include <gtest/gtest.h>

using namespace wendrel;
using namespace wendrel::media;
using namespace wendrel::test;
using namespace Qt::StringLiterals;

namespace {

const QString location = u"+48.8584+002.2945/"_s;

// Sources made once for the suite: a portrait phone clip (H.264 + AAC in QuickTime, turned by
// its display matrix, the phone's own location key), a Matroska clip whose picture and sound
// MP4 doesn't take and whose frame rate changes halfway, a transport stream cut short, and
// files that aren't what they claim.
class MovieWriterTest : public ::testing::Test {
protected:
    static void SetUpTestSuite()
    {
        folder = new QTemporaryDir;
        const QString plain = path(u"plain.mp4"_s);
        makeClip(plain, {u"-f"_s, u"lavfi"_s, u"-i"_s, u"testsrc2=s=320x180:r=30:d=2"_s, u"-f"_s, u"lavfi"_s, u"-i"_s,
                         u"sine=f=440:d=2:r=48000"_s, u"-c:v"_s, u"libx264"_s, u"-preset"_s, u"ultrafast"_s, u"-c:a"_s,
                         u"aac"_s});
        makeClip(path(u"phone.mov"_s),
                 {u"-i"_s, plain, u"-c"_s, u"copy"_s, u"-metadata:s:v:0"_s, u"rotate=90"_s, u"-metadata"_s,
                  u"creation_time=2021-05-01T10:00:00Z"_s, u"-metadata"_s, u"title=Walk"_s, u"-metadata"_s,
                  u"com.apple.quicktime.location.ISO6709="_s + location, u"-movflags"_s, u"use_metadata_tags"_s});
        // 30 pictures a second for the first second, then 10.
        makeClip(path(u"talk.mkv"_s),
                 {u"-f"_s, u"lavfi"_s, u"-i"_s, u"testsrc2=s=176x144:r=30:d=2"_s, u"-f"_s, u"lavfi"_s, u"-i"_s,
                  u"sine=f=330:d=2:r=48000"_s, u"-vf"_s, u"select='lt(t,1)+not(mod(n,3))'"_s, u"-fps_mode"_s,
                  u"passthrough"_s, u"-c:v"_s, u"mjpeg"_s, u"-c:a"_s, u"pcm_s16le"_s, u"-metadata"_s, u"title=Talk"_s});
        makeClip(path(u"clip.ts"_s), {u"-f"_s, u"lavfi"_s, u"-i"_s, u"testsrc2=s=160x120:r=25:d=3"_s, u"-f"_s,
                                      u"lavfi"_s, u"-i"_s, u"sine=d=3"_s, u"-c:v"_s, u"libx264"_s, u"-preset"_s,
                                      u"ultrafast"_s, u"-c:a"_s, u"aac"_s});
        QByteArray stream = readFile(path(u"clip.ts"_s));
        writeFile(path(u"cut.ts"_s), stream.left(stream.size() * 6 / 10));
        makeClip(path(u"silent.mp4"_s), {u"-f"_s, u"lavfi"_s, u"-i"_s, u"testsrc2=s=160x120:d=1"_s, u"-c:v"_s,
                                         u"libx264"_s, u"-preset"_s, u"ultrafast"_s});
        makeClip(path(u"tone.wav"_s), {u"-f"_s, u"lavfi"_s, u"-i"_s, u"sine=d=1"_s});
        // A picture codec nothing here decodes: an AVI whose codec code is changed to one no
        // one knows.
        makeClip(path(u"known.avi"_s), {u"-f"_s, u"lavfi"_s, u"-i"_s, u"testsrc2=s=160x120:d=1"_s, u"-c:v"_s,
                                        u"mpeg4"_s, u"-vtag"_s, u"FMP4"_s});
        writeFile(path(u"strange.avi"_s), readFile(path(u"known.avi"_s)).replace("FMP4", "QQQQ"));
        writeFile(path(u"notes.mp4"_s), "These are notes, not a movie.\n");
        writeFile(path(u"empty.mp4"_s), {});
    }
    static void TearDownTestSuite() { delete folder; }

    static QString path(const QString& name) { return folder->filePath(name); }

    void SetUp() override { registerMediaOperations(catalog); }
    void TearDown() override { EXPECT_TRUE(leftoverScratchFolders().isEmpty()); }

    MovieResult write(const QString& source, const QString& name, const MovieEncoding& encoding)
    {
        const OperationContext context(scratch.path());
        return writeMovie(path(source), scratch.filePath(name), encoding, context, [](double) {});
    }

    JobReport run(const char* id, const QString& source)
    {
        return runJob(runner, catalog.find(QString::fromUtf8(id)), {path(source)}, scratch.path());
    }

    static inline QTemporaryDir* folder = nullptr;
    QTemporaryDir scratch;
    OperationCatalog catalog;
    JobRunner runner;
};

// The offset of a top-level box of an MP4 or QuickTime file, or -1.
qint64 boxOffset(const QByteArray& file, const char* type)
{
    for (qint64 offset = 0; offset + 8 <= file.size();) {
        const quint32 size = qFromBigEndian<quint32>(file.constData() + offset);
        if (file.mid(offset + 4, 4) == type)
            return offset;
        if (size < 8)
            return -1;
        offset += size;
    }
    return -1;
}

QString tag(const QJsonObject& probed, const QString& key)
{
    return probed[u"format"_s][u"tags"_s][key].toString();
}

double duration(const QJsonObject& probed) { return probed[u"format"_s][u"duration"_s].toString().toDouble(); }

}  // namespace

TEST_F(MovieWriterTest, CopiesWhatFitsAndEncodesTheRest)
{
    const int phoneRotation = rotationOf(streamOf(probe(path(u"phone.mov"_s)), u"video"_s));
    ASSERT_NE(phoneRotation, 0);
    const struct {
        const char* source;
        MovieEncoding encoding;
        const char* videoCodec;
        int width, height;
        bool videoCopied;
        const char* audioCodec;
        bool audioCopied;
    } rows[] = {
        {"phone.mov", {}, "h264", 320, 180, true, "aac", true},
        // Shown 320 high: limited to 240 through its stored width.
        {"phone.mov", {.maxHeight = 240}, "h264", 240, 134, false, "aac", true},
        {"phone.mov", {.container = MovieContainer::mov, .codec = VideoCodec::hevc, .crf = 30, .allowStreamCopy = false},
         "hevc", 320, 180, false, "aac", true},
        {"talk.mkv", {}, "h264", 176, 144, false, "aac", false},
        {"talk.mkv", {.container = MovieContainer::mov}, "mjpeg", 176, 144, true, "pcm_s16le", true},
        {"talk.mkv", {.keepAudio = false}, "h264", 176, 144, false, nullptr, false},
    };
    int number = 0;
    for (const auto& row : rows) {
        const QString source = QString::fromUtf8(row.source);
        const bool mov = row.encoding.container == MovieContainer::mov;
        const QString name = QStringLiteral("out%1.%2").arg(++number).arg(mov ? u"mov"_s : u"mp4"_s);
        SCOPED_TRACE(name.toStdString());
        const MovieResult result = write(source, name, row.encoding);
        EXPECT_EQ(result.width, row.width);
        EXPECT_EQ(result.height, row.height);
        EXPECT_EQ(result.videoCopied, row.videoCopied);
        EXPECT_EQ(result.audioCopied, row.audioCopied);
        EXPECT_EQ(result.bytes, QFileInfo(scratch.filePath(name)).size());

        const QJsonObject before = probe(path(source));
        const QJsonObject after = probe(scratch.filePath(name));
        const QJsonObject video = streamOf(after, u"video"_s);
        EXPECT_EQ(video[u"codec_name"_s].toString(), QString::fromUtf8(row.videoCodec));
        EXPECT_EQ(video[u"width"_s].toInt(), row.width);
        EXPECT_EQ(video[u"height"_s].toInt(), row.height);
        EXPECT_EQ(rotationOf(video), rotationOf(streamOf(before, u"video"_s)));
        EXPECT_NEAR(duration(after), duration(before), 0.1);
        EXPECT_EQ(tag(after, u"title"_s), tag(before, u"title"_s));
        if (!row.videoCopied) {
            EXPECT_EQ(video[u"pix_fmt"_s].toString(), u"yuv420p");
        }
        if (QString::fromUtf8(row.videoCodec) == u"hevc") {
            EXPECT_EQ(video[u"codec_tag_string"_s].toString(), u"hvc1");
        }
        EXPECT_EQ(row.videoCopied, packetDigests(scratch.filePath(name), u"v"_s) == packetDigests(path(source), u"v"_s));
        if (row.audioCodec) {
            const QJsonObject audio = streamOf(after, u"audio"_s);
            EXPECT_EQ(audio[u"codec_name"_s].toString(), QString::fromUtf8(row.audioCodec));
            EXPECT_EQ(audio[u"sample_rate"_s].toString(), u"48000");
            EXPECT_EQ(row.audioCopied,
                      packetDigests(scratch.filePath(name), u"a"_s) == packetDigests(path(source), u"a"_s));
        } else {
            EXPECT_EQ(streamCount(after, u"audio"_s), 0);
        }
        if (source == u"phone.mov") {
            EXPECT_TRUE(tag(after, u"creation_time"_s).startsWith(u"2021-05-01T10:00:00"));
            EXPECT_EQ(tag(after, u"location"_s), location);
        }
        if (source == u"talk.mkv") {  // the frame rate changing halfway passes through
            EXPECT_EQ(pictureTimes(scratch.filePath(name)), pictureTimes(path(source)));
        }
        // The index first, so the movie plays while it downloads.
        const QByteArray bytes = readFile(scratch.filePath(name));
        EXPECT_LT(boxOffset(bytes, "moov"), boxOffset(bytes, "mdat"));
        EXPECT_GT(boxOffset(bytes, "moov"), 0);
    }
}

TEST_F(MovieWriterTest, AverageBitRateMeetsItsTarget)
{
    const MovieResult result = write(u"phone.mov"_s, u"small.mp4"_s,
                                     {.videoBitsPerSecond = 300'000, .keepAudio = false, .allowStreamCopy = false});
    EXPECT_FALSE(result.videoCopied);
    const double bitsPerSecond = result.bytes * 8 / duration(probe(scratch.filePath(u"small.mp4"_s)));
    EXPECT_GT(bitsPerSecond, 300'000 * 0.5);
    EXPECT_LT(bitsPerSecond, 300'000 * 1.25);
}

TEST_F(MovieWriterTest, TruncatedStreamConvertsWhatItHolds)
{
    const MovieResult result = write(u"cut.ts"_s, u"cut.mp4"_s, {});
    EXPECT_TRUE(result.videoCopied);
    EXPECT_TRUE(result.audioCopied);
    const double length = duration(probe(scratch.filePath(u"cut.mp4"_s)));
    EXPECT_GT(length, 0.8);
    EXPECT_LT(length, 2.5);
}

TEST_F(MovieWriterTest, CancellingStopsWithinTheFile)
{
    auto cancelled = std::make_shared<std::atomic_bool>(false);
    const OperationContext context(scratch.path(), {}, cancelled);
    double reached = 0;
    EXPECT_THROW(writeMovie(path(u"talk.mkv"_s), scratch.filePath(u"x.mp4"_s), {}, context,
                            [&](double fraction) {
                                reached = fraction;
                                *cancelled = fraction > 0.2;
                            }),
                 OperationCancelled);
    EXPECT_LT(reached, 0.5);
}

TEST_F(MovieWriterTest, MuteCopiesThePictureAlone)
{
    const struct {
        const char* source;
        const char* result;
    } rows[] = {{"phone.mov", "phone Muted.mov"}, {"talk.mkv", "talk Muted.mkv"}};
    for (const auto& row : rows) {
        const JobReport report = run("video.mute", QString::fromUtf8(row.source));
        ASSERT_TRUE(report.succeeded) << report.message.toStdString();
        EXPECT_EQ(QFileInfo(report.results.value(0)).fileName(), QString::fromUtf8(row.result));
        const QJsonObject muted = probe(report.results.value(0));
        const QJsonObject original = probe(path(QString::fromUtf8(row.source)));
        EXPECT_EQ(streamCount(muted, u"audio"_s), 0);
        EXPECT_EQ(packetDigests(report.results.value(0), u"v"_s), packetDigests(path(QString::fromUtf8(row.source)), u"v"_s));
        EXPECT_EQ(rotationOf(streamOf(muted, u"video"_s)), rotationOf(streamOf(original, u"video"_s)));
        EXPECT_EQ(tag(muted, u"title"_s), tag(original, u"title"_s));
    }
}

TEST_F(MovieWriterTest, SoundtrackBecomesM4a)
{
    const JobReport copied = run("video.extractAudio", u"phone.mov"_s);
    ASSERT_TRUE(copied.succeeded) << copied.message.toStdString();
    EXPECT_EQ(QFileInfo(copied.results.value(0)).fileName(), u"phone.m4a");
    EXPECT_EQ(packetDigests(copied.results.value(0), u"a"_s), packetDigests(path(u"phone.mov"_s), u"a"_s));
    EXPECT_EQ(streamCount(probe(copied.results.value(0)), u"video"_s), 0);

    const JobReport encoded = run("video.extractAudio", u"talk.mkv"_s);
    ASSERT_TRUE(encoded.succeeded) << encoded.message.toStdString();
    const QJsonObject probed = probe(encoded.results.value(0));
    EXPECT_EQ(streamOf(probed, u"audio"_s)[u"codec_name"_s].toString(), u"aac");
    EXPECT_NEAR(duration(probed), 2.0, 0.1);
    EXPECT_EQ(tag(probed, u"title"_s), u"Talk");
}

TEST_F(MovieWriterTest, ConversionEntriesNameTheirResultsAndSkipTheirOwnContainer)
{
    const JobReport report = run("media.mp4", u"talk.mkv"_s);
    ASSERT_TRUE(report.succeeded) << report.message.toStdString();
    EXPECT_EQ(QFileInfo(report.results.value(0)).fileName(), u"talk.mp4");
    const auto offered = [&](const QString& name, const char* id) {
        for (const FileOperationPtr& entry : catalog.fitting(RingKind::convert, {path(name)})) {
            if (entry->id() == QString::fromUtf8(id))
                return true;
        }
        return false;
    };
    EXPECT_FALSE(offered(u"silent.mp4"_s, "media.mp4"));
    EXPECT_TRUE(offered(u"silent.mp4"_s, "media.mov"));
    EXPECT_FALSE(offered(u"phone.mov"_s, "media.mov"));
    EXPECT_TRUE(offered(u"phone.mov"_s, "media.mp4"));
}

TEST_F(MovieWriterTest, BadInputsSayWhatIsWrong)
{
    const struct {
        const char* id;
        const char* source;
        const char* message;
    } rows[] = {
        {"media.mp4", "notes.mp4", "Can't read this file"},
        {"media.mov", "empty.mp4", "Can't read this file"},
        {"video.mute", "notes.mp4", "Can't read this file"},
        {"media.mp4", "strange.avi", "Unsupported video format"},
        {"video.extractAudio", "silent.mp4", "No audio in this file"},
    };
    for (const auto& row : rows) {
        const QString source = path(QString::fromUtf8(row.source));
        const QByteArray original = readFile(source);
        const JobReport report = run(row.id, QString::fromUtf8(row.source));
        EXPECT_FALSE(report.succeeded) << row.id << " " << row.source;
        EXPECT_EQ(report.message, QString::fromUtf8(row.message)) << row.id << " " << row.source;
        EXPECT_EQ(readFile(source), original);
    }
    EXPECT_TRUE(folderEntries(scratch.path()).isEmpty());
    try {
        write(u"tone.wav"_s, u"tone.mp4"_s, {});
        ADD_FAILURE() << "a sound file made a movie";
    } catch (const OperationError& error) {
        EXPECT_EQ(error.message(), u"No video in this file");
    }
}
