#include "media/MediaOperations.h"
#include "media/MediaTestTools.h"
#include "media/audio/ConvertAudio.h"
#include "operations/JobRunner.h"
#include "operations/OperationCatalog.h"
#include "operations/OperationError.h"
#include "operations/settings/FormatSettings.h"
#include "support/JobHarness.h"
#include "support/TestEnvironment.h"

#include <QFile>
#include <QProcess>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <cmath>

using namespace wendrel;
using namespace wendrel::test;
using namespace Qt::StringLiterals;

namespace {

const QStringList s16{u"-c:a"_s, u"pcm_s16le"_s}, s24{u"-c:a"_s, u"pcm_s24le"_s}, f32{u"-c:a"_s, u"pcm_f32le"_s},
    mp3{u"-c:a"_s, u"libmp3lame"_s}, flac16{u"-c:a"_s, u"flac"_s, u"-sample_fmt"_s, u"s16"_s},
    flac24{u"-c:a"_s, u"flac"_s, u"-sample_fmt"_s, u"s32"_s};

// Tones made once for the suite and shared by the normaliser's and the converters' tables.
const struct {
    const char* name;
    double peak;
    int rate;
    QStringList codec;
} sources[] = {
    {"Take.WAV", 0.5, 48000, s16},           {"Loud.wav", 1.0, 44100, f32},
    {"Hi.wav", 0.25, 96000, s24},            {"Song.flac", 0.5, 44100, flac16},
    {"Pad.caf", 0.25, 44100, {u"-c:a"_s, u"pcm_s24be"_s}}, {"Interview.mp3", 0.5, 44100, mp3},
    {"Memo.m4a", 0.3, 48000, {u"-c:a"_s, u"aac"_s}},       {"Deep.flac", 0.5, 48000, flac24},
    {"Low.mp3", 0.5, 32000, mp3},            {"Small.flac", 0.5, 22050, flac16},
};

class AudioOperationsTest : public ::testing::Test {
protected:
    static void SetUpTestSuite()
    {
        folder = new QTemporaryDir;
        for (const auto& source : sources)
            makeTone(path(source.name), 1, source.peak, source.rate, 2, source.codec);
    }
    static void TearDownTestSuite() { delete folder; }
    void SetUp() override
    {
        registerMediaOperations(catalog);
        FormatSettings{}.save();
    }
    void TearDown() override { EXPECT_TRUE(leftoverScratchFolders().isEmpty()); }

    static QString path(const char* name) { return folder->filePath(QString::fromUtf8(name)); }
    JobReport run(const char* id, const QString& source)
    {
        return runJob(runner, catalog.find(QString::fromUtf8(id)), {source});
    }

    static inline QTemporaryDir* folder = nullptr;
    OperationCatalog catalog;
    JobRunner runner;
};

}  // namespace

// Each source normalised: the result's name, container, depth and rate, and its peak measured by
// the ffmpeg program at -1 dBFS (within what 16 bits or AAC allow).
TEST_F(AudioOperationsTest, NormalizeBringsEveryPeakToMinusOneDecibel)
{
    const struct {
        const char* source;
        const char* result;
        const char* codec;
        int rate;
        int bits;  // 0: lossy
        double toleranceDb;
    } rows[] = {
        {"Take.WAV", "Take Normalized.wav", "pcm_s16le", 48000, 16, 0.01},
        {"Loud.wav", "Loud Normalized.wav", "pcm_f32le", 44100, 32, 0.0001},
        {"Hi.wav", "Hi Normalized.wav", "pcm_s24le", 48000, 24, 0.01},
        {"Song.flac", "Song Normalized.flac", "flac", 44100, 16, 0.01},
        {"Pad.caf", "Pad Normalized.caf", "pcm_s24be", 44100, 24, 0.01},
        // AAC's coding error lifts a pure tone's decoded peak by up to about half a decibel.
        {"Interview.mp3", "Interview Normalized.m4a", "aac", 44100, 0, 0.75},
        {"Memo.m4a", "Memo Normalized.m4a", "aac", 48000, 0, 0.75},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.source);
        const JobReport report = run("audio.normalize", path(row.source));
        ASSERT_EQ(report.results, QStringList{path(row.result)}) << report.message.toStdString();
        const ProbedStream audio = probeMedia(path(row.result)).first(u"audio"_s);
        EXPECT_EQ(audio.codec, QString::fromUtf8(row.codec));
        EXPECT_EQ(audio.sampleRate, row.rate);
        EXPECT_EQ(audio.channels, 2);
        EXPECT_EQ(row.bits ? audio.bitDepth : 0, row.bits);
        EXPECT_NEAR(audio.duration, 1.0, 0.05);
        EXPECT_NEAR(20 * std::log10(samplePeak(path(row.result))), -1.0, row.toleranceDb);
        QFile::remove(path(row.result));
    }
}

// Each target from sources of every depth, under each depth setting: codec, depth and rate, and
// the samples themselves (the tone's peak, near it through a lossy codec).
TEST_F(AudioOperationsTest, TargetsFollowTheSourceAndTheSettings)
{
    using Depth = FormatSettings::BitDepth;
    const struct {
        const char* id;
        Depth depth;
        const char* source;
        const char* result;
        const char* codec;
        const char* sampleFormat;
        int bits;  // 0: lossy
        int rate;
    } rows[] = {
        {"media.flac", {}, "Take.WAV", "Take.flac", "flac", "s16", 16, 48000},
        {"media.flac", {}, "Hi.wav", "Hi.flac", "flac", "s32", 24, 96000},
        {"media.flac", {}, "Loud.wav", "Loud.flac", "flac", "s32", 24, 44100},
        {"media.flac", {}, "Interview.mp3", "Interview.flac", "flac", "s16", 16, 44100},
        {"media.wav", {}, "Interview.mp3", "Interview.wav", "pcm_s16le", "s16", 16, 44100},
        {"media.wav", {}, "Deep.flac", "Deep.wav", "pcm_s24le", "s32", 24, 48000},
        {"media.wav", Depth::float32, "Deep.flac", "Deep.wav", "pcm_f32le", "flt", 32, 48000},
        {"media.wav", Depth::bits32, "Low.mp3", "Low.wav", "pcm_s32le", "s32", 32, 32000},
        {"media.aiff", {}, "Pad.caf", "Pad.aiff", "pcm_s24be", "s32", 24, 44100},
        {"media.aiff", {}, "Loud.wav", "Loud.aiff", "pcm_s32be", "s32", 32, 44100},
        {"media.aiff", Depth::bits16, "Pad.caf", "Pad.aiff", "pcm_s16be", "s16", 16, 44100},
        {"media.m4a", {}, "Hi.wav", "Hi.m4a", "aac", "fltp", 0, 48000},
        {"media.m4a", {}, "Small.flac", "Small.m4a", "aac", "fltp", 0, 22050},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.result);
        FormatSettings settings;
        settings.bitDepth = row.depth;
        settings.save();
        const JobReport report = run(row.id, path(row.source));
        ASSERT_EQ(report.results, QStringList{path(row.result)}) << report.message.toStdString();
        const ProbedMedia media = probeMedia(path(row.result));
        const ProbedStream audio = media.first(u"audio"_s);
        EXPECT_EQ(audio.codec, QString::fromUtf8(row.codec));
        EXPECT_EQ(audio.sampleFormat, QString::fromUtf8(row.sampleFormat));
        EXPECT_EQ(row.bits ? audio.bitDepth : 0, row.bits);
        EXPECT_EQ(audio.sampleRate, row.rate);
        EXPECT_EQ(audio.channels, 2);
        EXPECT_NEAR(media.duration, 1.0, 0.05);
        const bool lossy = QByteArray(row.source).endsWith(".mp3") || row.bits == 0;
        EXPECT_NEAR(samplePeak(path(row.result)), samplePeak(path(row.source)), lossy ? 0.05 : 0.001);
        QFile::remove(path(row.result));
    }
}

// The AAC bit rate follows the setting (on noise: a pure tone needs far fewer bits than any).
TEST_F(AudioOperationsTest, M4aFollowsTheBitrateSetting)
{
    ASSERT_TRUE(makeMedia(path("noise.wav"), lavfi(u"anoisesrc=d=2:c=pink:a=0.3"_s) << u"-ac"_s << u"2"_s));
    for (const int kilobits : {96, 192}) {
        FormatSettings settings;
        settings.audioBitrate = kilobits;
        settings.save();
        const JobReport report = run("media.m4a", path("noise.wav"));
        ASSERT_TRUE(report.succeeded) << report.message.toStdString();
        EXPECT_NEAR(double(probeMedia(report.results.value(0)).bitRate), kilobits * 1000.0, kilobits * 150.0);
        QFile::remove(report.results.value(0));
    }
}

// Tags and the cover go wherever the target has room: M4A atoms, Vorbis comments and a PICTURE
// block, AIFF's ID3 chunk; WAV's INFO list takes the text only.
TEST_F(AudioOperationsTest, TagsAndCoverArtTravel)
{
    ASSERT_TRUE(makeMedia(path("cover.png"), lavfi(u"testsrc2=size=64x64"_s) << u"-frames:v"_s << u"1"_s));
    ASSERT_TRUE(makeMedia(path("Tagged.mp3"),
                          lavfi(u"sine=d=1"_s) + QStringList{u"-i"_s, path("cover.png"), u"-map"_s, u"0"_s, u"-map"_s, u"1"_s,
                                                               u"-c:v"_s, u"copy"_s, u"-disposition:v"_s, u"attached_pic"_s,
                                                               u"-metadata"_s, u"title=Low Tide"_s, u"-metadata"_s,
                                                               u"artist=Ana Ruiz"_s, u"-metadata"_s, u"track=3/9"_s}));
    for (const auto& [id, result, cover] : {std::tuple{"media.m4a", "Tagged.m4a", true}, {"media.flac", "Tagged.flac", true},
                                            {"media.aiff", "Tagged.aiff", true}, {"media.wav", "Tagged.wav", false}}) {
        SCOPED_TRACE(result);
        ASSERT_TRUE(run(id, path("Tagged.mp3")).succeeded);
        const ProbedMedia media = probeMedia(path(result));
        EXPECT_EQ(media.tags.value(u"title"_s), u"Low Tide"_s);
        EXPECT_EQ(media.tags.value(u"artist"_s), u"Ana Ruiz"_s);
        EXPECT_TRUE(media.tags.value(u"track"_s).startsWith(u"3"_s)) << media.tags.value(u"track"_s).toStdString();
        EXPECT_EQ(media.count(u"video"_s), cover ? 1 : 0);
        EXPECT_EQ(media.first(u"video"_s).attachedPicture, cover);
        EXPECT_EQ(media.first(u"video"_s).width, cover ? 64 : 0);
    }
}

// What isn't sound gives a clear message and adds nothing to the folder; a truncated file gives
// what it holds; a movie gives its soundtrack; too many channels are mixed down; joined parts of
// different shapes come out whole.
TEST_F(AudioOperationsTest, OddSources)
{
    makeMedia(path("picture.mp4"), lavfi(u"testsrc2=size=64x48:d=1"_s));
    makeMedia(path("quiet.wav"), lavfi(u"anullsrc=d=1"_s));
    writeFile(path("text.mp3"), "just some words, not a sound\n");
    writeFile(path("empty.wav"), {});
    makeTone(path("long.mp3"), 4, 0.5, 44100, 2, mp3);
    QFile::resize(path("long.mp3"), QFileInfo(path("long.mp3")).size() / 2);
    makeMedia(path("clip.mp4"), lavfi(u"testsrc2=size=64x48:d=1"_s) + lavfi(u"sine=d=1"_s) << u"-shortest"_s);
    // Two MP3s joined end to end, at different rates and channel counts.
    makeMedia(path("part1.mp3"), lavfi(u"sine=d=1:r=44100"_s));
    makeMedia(path("part2.mp3"), lavfi(u"sine=d=1:r=48000"_s) << u"-ac"_s << u"2"_s);
    writeFile(path("joined.mp3"), readFile(path("part1.mp3")) + readFile(path("part2.mp3")));
    makeMedia(path("many.wav"), lavfi(u"sine=d=1"_s) << u"-af"_s << u"pan=hexadecagonal|c0=c0"_s);
    const struct {
        const char* id;
        const char* source;
        const char* outcome;  // the failure, or the result's name
        double seconds;
        int channels;
    } rows[] = {
        {"media.flac", "picture.mp4", "No audio in this file"},  {"media.flac", "text.mp3", "Can't read this file"},
        {"media.flac", "empty.wav", "Can't read this file"},     {"audio.normalize", "quiet.wav", "The audio is silent"},
        {"audio.normalize", "text.mp3", "Can't read this file"}, {"media.flac", "long.mp3", "long.flac", 2.0, 2},
        {"media.flac", "clip.mp4", "clip.flac", 1.0, 1},         {"media.flac", "many.wav", "many.flac", 1.0, 8},
        {"media.flac", "joined.mp3", "joined.flac", 2.0, 1},  // the first part's shape
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.source);
        const QStringList before = folderEntries(folder->path());
        const JobReport report = run(row.id, path(row.source));
        if (row.seconds > 0) {
            ASSERT_EQ(report.results, QStringList{path(row.outcome)}) << report.message.toStdString();
            const ProbedMedia media = probeMedia(path(row.outcome));
            EXPECT_NEAR(media.duration, row.seconds, 0.3);
            EXPECT_EQ(media.first(u"audio"_s).channels, row.channels);  // 8: FLAC's most, 7.1
        } else {
            EXPECT_EQ(report.message, QString::fromUtf8(row.outcome));
            EXPECT_EQ(folderEntries(folder->path()), before);
        }
    }
}

// Every sound and movie is offered each target but its own format; only sounds are normalised.
TEST_F(AudioOperationsTest, WhichFilesAreOffered)
{
    const struct {
        const char* id;
        const char* file;  // missing files: their type is their extension's
        bool offered;
    } rows[] = {
        {"media.m4a", "x.m4a", false},  {"media.m4a", "x.wav", true},   {"media.m4a", "x.mkv", true},
        {"media.wav", "x.WAV", false},  {"media.wav", "x.mp4", true},   {"media.aiff", "x.aiff", false},
        {"media.aiff", "x.aif", false}, {"media.aiff", "x.flac", true}, {"media.flac", "x.flac", false},
        {"media.flac", "x.ogg", true},  {"media.flac", "x.txt", false}, {"audio.normalize", "x.mp3", true},
        {"audio.normalize", "x.mp4", false}, {"media.mp4", "x.mp4", false}, {"media.mp4", "x.mov", true},
        {"media.mov", "x.mov", false},  {"media.mov", "x.mkv", true},
    };
    for (const auto& row : rows) {
        const bool offered = !OperationCatalog::refusal(*catalog.find(QString::fromUtf8(row.id)), {path(row.file)});
        EXPECT_EQ(offered, row.offered) << row.id << " " << row.file;
    }
}

// Cancelled in the middle of a file, the conversion stops within the next packet or so.
TEST_F(AudioOperationsTest, CancellationStopsPromptly)
{
    ASSERT_TRUE(makeMedia(path("ten.wav"), lavfi(u"sine=d=600:r=8000"_s)));
    const auto cancelled = std::make_shared<std::atomic_bool>(false);
    double lastSeen = 0;
    const QTemporaryDir scratch;
    const OperationContext context(scratch.path(), [&](double fraction) {
        lastSeen = fraction;
        if (fraction >= 0.1)
            cancelled->store(true);
    }, cancelled);
    EXPECT_THROW(media::convertAudio(path("ten.wav"), context, media::AudioContainer::flac, u"flac"_s), OperationCancelled);
    EXPECT_LT(lastSeen, 0.11);
}

// As a user runs it: the command line loads the media module, normalises two files side by side
// and places each result beside its original.
TEST_F(AudioOperationsTest, CommandLineNormalizesSeveralFiles)
{
    QProcess wendrel;
    wendrel.start(QStringLiteral(WENDREL_BINARY), {u"run"_s, u"audio.normalize"_s, path("Take.WAV"), path("Interview.mp3")});
    ASSERT_TRUE(wendrel.waitForFinished(120'000));
    EXPECT_EQ(wendrel.exitCode(), 0) << wendrel.readAllStandardError().toStdString();
    EXPECT_EQ(probeMedia(path("Take Normalized.wav")).first(u"audio"_s).codec, u"pcm_s16le"_s);
    EXPECT_EQ(probeMedia(path("Interview Normalized.m4a")).first(u"audio"_s).codec, u"aac"_s);
}
