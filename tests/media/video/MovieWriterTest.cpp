#include "media/MediaOperations.h"
#include "media/MediaTestTools.h"
#include "media/video/MovieWriter.h"
#include "operations/JobRunner.h"
#include "operations/OperationCatalog.h"
#include "operations/OperationContext.h"
#include "operations/OperationError.h"
#include "support/JobHarness.h"
#include "support/TestEnvironment.h"

#include <QFileInfo>
#include <QTemporaryDir>
#include <QtEndian>

#include <gtest/gtest.h>

using namespace wendrel;
using namespace wendrel::media;
using namespace wendrel::test;
using namespace Qt::StringLiterals;

namespace {

const QString location = u"+48.8584+002.2945/"_s;
const QStringList x264{u"-c:v"_s, u"libx264"_s, u"-preset"_s, u"ultrafast"_s};

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
        makeMedia(plain, lavfi(u"testsrc2=s=320x180:r=30:d=2"_s) + lavfi(u"sine=f=440:d=2:r=48000"_s) + x264);
        makeMedia(path(u"phone.mov"_s), {u"-i"_s, plain, u"-c"_s, u"copy"_s, u"-metadata:s:v:0"_s, u"rotate=90"_s,
                                         u"-metadata"_s, u"creation_time=2021-05-01T10:00:00Z"_s, u"-metadata"_s,
                                         u"title=Walk"_s, u"-metadata"_s, u"com.apple.quicktime.location.ISO6709="_s + location,
                                         u"-movflags"_s, u"use_metadata_tags"_s});
        // 30 pictures a second for the first second, then 10.
        makeMedia(path(u"talk.mkv"_s), lavfi(u"testsrc2=s=176x144:r=30:d=2"_s) + lavfi(u"sine=f=330:d=2:r=48000"_s) +
                                           QStringList{u"-vf"_s, u"select='lt(t,1)+not(mod(n,3))'"_s, u"-fps_mode"_s,
                                                       u"passthrough"_s, u"-c:v"_s, u"mjpeg"_s, u"-c:a"_s, u"pcm_s16le"_s,
                                                       u"-metadata"_s, u"title=Talk"_s});
        makeMedia(path(u"clip.ts"_s), lavfi(u"testsrc2=s=160x120:r=25:d=3"_s) + lavfi(u"sine=d=3"_s) + x264 << u"-c:a"_s << u"aac"_s);
        const QByteArray stream = readFile(path(u"clip.ts"_s));
        writeFile(path(u"cut.ts"_s), stream.left(stream.size() * 6 / 10));
        makeMedia(path(u"silent.mp4"_s), lavfi(u"testsrc2=s=160x120:d=1"_s) + x264);
        makeMedia(path(u"sound.mp4"_s), lavfi(u"sine=d=1"_s));
        // A picture codec nothing here decodes: an AVI whose codec code is changed to one no
        // one knows.
        makeMedia(path(u"known.avi"_s), lavfi(u"testsrc2=s=160x120:d=1"_s) << u"-c:v"_s << u"mpeg4"_s << u"-vtag"_s << u"FMP4"_s);
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

}  // namespace

TEST_F(MovieWriterTest, CopiesWhatFitsAndEncodesTheRest)
{
    ASSERT_NE(probeMedia(path(u"phone.mov"_s)).first(u"video"_s).rotation, 0);
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
        const QString source = path(QString::fromUtf8(row.source));
        const bool mov = row.encoding.container == MovieContainer::mov;
        const QString name = u"out%1.%2"_s.arg(++number).arg(mov ? u"mov"_s : u"mp4"_s);
        const QString result = scratch.filePath(name);
        SCOPED_TRACE(name.toStdString());
        const MovieResult written = write(QString::fromUtf8(row.source), name, row.encoding);
        EXPECT_EQ(written.width, row.width);
        EXPECT_EQ(written.height, row.height);
        EXPECT_EQ(written.videoCopied, row.videoCopied);
        EXPECT_EQ(written.audioCopied, row.audioCopied);
        EXPECT_EQ(written.bytes, QFileInfo(result).size());

        const ProbedMedia before = probeMedia(source), after = probeMedia(result);
        const ProbedStream video = after.first(u"video"_s);
        EXPECT_EQ(video.codec, QString::fromUtf8(row.videoCodec));
        EXPECT_EQ(video.width, row.width);
        EXPECT_EQ(video.height, row.height);
        EXPECT_EQ(video.rotation, before.first(u"video"_s).rotation);
        EXPECT_EQ(video.pixelFormat, row.videoCopied ? before.first(u"video"_s).pixelFormat : u"yuv420p"_s);
        EXPECT_EQ(video.codecTag == u"hvc1", QString::fromUtf8(row.videoCodec) == u"hevc");
        EXPECT_EQ(row.videoCopied, packetDigests(result, u"v"_s) == packetDigests(source, u"v"_s));
        EXPECT_NEAR(after.duration, before.duration, 0.1);
        // The tags and the date go along (the place is checked below: its key changes).
        for (const QString& key : {u"title"_s, u"creation_time"_s})
            EXPECT_EQ(after.tags.value(key).left(19), before.tags.value(key).left(19)) << key.toStdString();
        EXPECT_EQ(after.count(u"audio"_s), row.audioCodec ? 1 : 0);
        if (row.audioCodec) {
            EXPECT_EQ(after.first(u"audio"_s).codec, QString::fromUtf8(row.audioCodec));
            EXPECT_EQ(after.first(u"audio"_s).sampleRate, 48000);
            EXPECT_EQ(row.audioCopied, packetDigests(result, u"a"_s) == packetDigests(source, u"a"_s));
        }
        if (source.endsWith(u".mkv")) {  // the frame rate changing halfway passes through
            EXPECT_EQ(pictureTimes(result), pictureTimes(source));
        }
        // The index first, so the movie plays while it downloads.
        const QByteArray bytes = readFile(result);
        EXPECT_LT(boxOffset(bytes, "moov"), boxOffset(bytes, "mdat"));
        EXPECT_GT(boxOffset(bytes, "moov"), 0);
    }
    EXPECT_TRUE(probeMedia(scratch.filePath(u"out1.mp4"_s)).tags.value(u"creation_time"_s).startsWith(u"2021-05-01T10:00:00"));
    EXPECT_EQ(probeMedia(scratch.filePath(u"out1.mp4"_s)).tags.value(u"location"_s), location);
}

TEST_F(MovieWriterTest, AverageBitRateMeetsItsTargetAndACutStreamGivesWhatItHolds)
{
    const MovieResult small = write(u"phone.mov"_s, u"small.mp4"_s,
                                    {.videoBitsPerSecond = 300'000, .keepAudio = false, .allowStreamCopy = false});
    EXPECT_FALSE(small.videoCopied);
    const double bitsPerSecond = small.bytes * 8 / probeMedia(scratch.filePath(u"small.mp4"_s)).duration;
    EXPECT_GT(bitsPerSecond, 300'000 * 0.5);
    EXPECT_LT(bitsPerSecond, 300'000 * 1.25);

    const MovieResult cut = write(u"cut.ts"_s, u"cut.mp4"_s, {});
    EXPECT_TRUE(cut.videoCopied);
    EXPECT_TRUE(cut.audioCopied);
    const double length = probeMedia(scratch.filePath(u"cut.mp4"_s)).duration;
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

// The entries as a user runs them: each result's name, which streams it holds, which went across
// bit for bit, and the title, turn and length kept.
TEST_F(MovieWriterTest, EntriesNameTheirResultsAndKeepWhatTheyShould)
{
    const struct {
        const char* id;
        const char* source;
        const char* result;
        const char* videoCodec;  // nullptr: no picture
        bool videoIdentical;
        const char* audioCodec;  // nullptr: no sound
        bool audioIdentical;
    } rows[] = {
        {"video.mute", "phone.mov", "phone Muted.mov", "h264", true, nullptr, false},
        {"video.mute", "talk.mkv", "talk Muted.mkv", "mjpeg", true, nullptr, false},
        {"media.mp4", "talk.mkv", "talk.mp4", "h264", false, "aac", false},
        {"video.extractAudio", "phone.mov", "phone.m4a", nullptr, false, "aac", true},
        {"video.extractAudio", "talk.mkv", "talk.m4a", nullptr, false, "aac", false},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.result);
        const QString source = path(QString::fromUtf8(row.source));
        const JobReport report = run(row.id, QString::fromUtf8(row.source));
        ASSERT_TRUE(report.succeeded) << report.message.toStdString();
        const QString result = report.results.value(0);
        EXPECT_EQ(QFileInfo(result).fileName(), QString::fromUtf8(row.result));
        const ProbedMedia before = probeMedia(source), after = probeMedia(result);
        EXPECT_EQ(after.first(u"video"_s).codec, QString::fromUtf8(row.videoCodec));
        EXPECT_EQ(after.first(u"audio"_s).codec, QString::fromUtf8(row.audioCodec));
        EXPECT_EQ(after.count(u"video"_s) + after.count(u"audio"_s), 1 + (row.videoCodec && row.audioCodec ? 1 : 0));
        if (row.videoCodec) {
            EXPECT_EQ(after.first(u"video"_s).rotation, before.first(u"video"_s).rotation);
            EXPECT_EQ(packetDigests(result, u"v"_s) == packetDigests(source, u"v"_s), row.videoIdentical);
        } else {
            EXPECT_EQ(packetDigests(result, u"a"_s) == packetDigests(source, u"a"_s), row.audioIdentical);
        }
        EXPECT_EQ(after.tags.value(u"title"_s), before.tags.value(u"title"_s));
        EXPECT_NEAR(after.duration, before.duration, 0.1);
    }
}

// Every entry opening what it can't use says why, leaves the original as it was and adds nothing.
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
        {"video.gif", "notes.mp4", "Can't read this file"},
        {"video.gif", "empty.mp4", "Can't read this file"},
        {"media.mp4", "strange.avi", "Unsupported video format"},
        {"video.gif", "strange.avi", "Unsupported video format"},
        {"video.extractAudio", "silent.mp4", "No audio in this file"},
        {"media.mov", "sound.mp4", "No video in this file"},
        {"video.gif", "sound.mp4", "No video in this file"},
    };
    const QStringList sources = folderEntries(folder->path());
    for (const auto& row : rows) {
        const QString source = path(QString::fromUtf8(row.source));
        const QByteArray original = readFile(source);
        const JobReport report = run(row.id, QString::fromUtf8(row.source));
        EXPECT_FALSE(report.succeeded) << row.id << " " << row.source;
        EXPECT_EQ(report.message, QString::fromUtf8(row.message)) << row.id << " " << row.source;
        EXPECT_EQ(readFile(source), original);
    }
    EXPECT_TRUE(folderEntries(scratch.path()).isEmpty());
    EXPECT_EQ(folderEntries(folder->path()), sources);
}
