#include "media/MediaTestTools.h"
#include "media/audio/AudioOperations.h"
#include "media/audio/ConvertAudio.h"
#include "operations/JobRunner.h"
#include "operations/OperationCatalog.h"
#include "operations/OperationError.h"
#include "operations/settings/FormatSettings.h"
#include "support/JobHarness.h"
#include "support/TestEnvironment.h"

#include <QDir>
#include <QFile>
#include <QProcess>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <cmath>

using namespace wendrel;
using namespace wendrel::test;
using namespace Qt::StringLiterals;

namespace {

double decibels(double peak) { return 20 * std::log10(peak); }

class AudioOperationsTest : public ::testing::Test {
protected:
    void SetUp() override
    {
        registerAudioOperations(catalog);
        FormatSettings{}.save();
    }
    void TearDown() override { EXPECT_TRUE(leftoverScratchFolders().isEmpty()); }

    QString path(const char* name) const { return folder.filePath(QString::fromUtf8(name)); }
    QString tone(const char* name, double peak, int rate, const QStringList& codec, double seconds = 1)
    {
        makeTone(path(name), seconds, peak, rate, 2, codec);
        return path(name);
    }
    JobReport run(const char* id, const QString& source)
    {
        return runJob(runner, catalog.find(QString::fromUtf8(id)), {source});
    }

    QTemporaryDir folder;
    OperationCatalog catalog;
    JobRunner runner;
};

const QStringList s16{u"-c:a"_s, u"pcm_s16le"_s}, s24{u"-c:a"_s, u"pcm_s24le"_s}, f32{u"-c:a"_s, u"pcm_f32le"_s},
    mp3{u"-c:a"_s, u"libmp3lame"_s}, aac{u"-c:a"_s, u"aac"_s}, flac{u"-c:a"_s, u"flac"_s},
    flac16{u"-c:a"_s, u"flac"_s, u"-sample_fmt"_s, u"s16"_s}, flac24{u"-c:a"_s, u"flac"_s, u"-sample_fmt"_s, u"s32"_s};

}  // namespace

// Each source normalised: the result's name, container, depth and rate, and its peak measured by
// the ffmpeg program at -1 dBFS (within what 16 bits or AAC allow).
TEST_F(AudioOperationsTest, NormalizeBringsEveryPeakToMinusOneDecibel)
{
    const struct {
        const char* source;
        double peak;
        int rate;
        QStringList codec;
        const char* result;
        const char* codecOut;
        int rateOut;
        int bitsOut;  // bits_per_raw_sample or bits_per_sample; 0: lossy
        double toleranceDb;
    } rows[] = {
        {"Take.WAV", 0.5, 48000, s16, "Take Normalized.wav", "pcm_s16le", 48000, 16, 0.01},
        {"Loud.wav", 1.0, 44100, f32, "Loud Normalized.wav", "pcm_f32le", 44100, 32, 0.0001},
        {"Hi.wav", 0.25, 96000, s24, "Hi Normalized.wav", "pcm_s24le", 48000, 24, 0.01},
        {"Song.flac", 0.5, 44100, flac16, "Song Normalized.flac", "flac", 44100, 16, 0.01},
        {"Pad.caf", 0.25, 44100, {u"-c:a"_s, u"pcm_s24be"_s}, "Pad Normalized.caf", "pcm_s24be", 44100, 24, 0.01},
        // AAC's coding error lifts a pure tone's decoded peak by up to about half a decibel.
        {"Interview.mp3", 0.5, 44100, mp3, "Interview Normalized.m4a", "aac", 44100, 0, 0.75},
        {"Memo.m4a", 0.3, 48000, aac, "Memo Normalized.m4a", "aac", 48000, 0, 0.75},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.source);
        const JobReport report = run("audio.normalize", tone(row.source, row.peak, row.rate, row.codec));
        ASSERT_TRUE(report.succeeded) << report.message.toStdString();
        ASSERT_EQ(report.results, QStringList{path(row.result)});
        const ProbedStream audio = probeMedia(path(row.result)).first(u"audio"_s);
        EXPECT_EQ(audio.codec, QString::fromUtf8(row.codecOut));
        EXPECT_EQ(audio.sampleRate, row.rateOut);
        EXPECT_EQ(audio.channels, 2);
        if (row.bitsOut) {
            EXPECT_EQ(audio.bitsPerRawSample ? audio.bitsPerRawSample : audio.bitsPerSample, row.bitsOut);
        }
        EXPECT_NEAR(audio.duration, 1.0, 0.05);
        EXPECT_NEAR(decibels(samplePeak(path(row.result))), -1.0, row.toleranceDb);
    }
}

TEST_F(AudioOperationsTest, SilenceIsRefusedAndNothingIsMade)
{
    makeMedia(path("Quiet.wav"), {u"-f"_s, u"lavfi"_s, u"-i"_s, u"anullsrc=d=1"_s});
    const JobReport report = run("audio.normalize", path("Quiet.wav"));
    EXPECT_FALSE(report.succeeded);
    EXPECT_EQ(report.message, u"The audio is silent"_s);
    EXPECT_EQ(folderEntries(folder.path()), QStringList{u"Quiet.wav"_s});
}

// Each target from sources of every depth, under each depth setting: codec, depth and rate.
TEST_F(AudioOperationsTest, TargetsFollowTheSourceAndTheSettings)
{
    const struct {
        const char* id;
        FormatSettings::BitDepth depth;
        const char* source;
        int rate;
        QStringList codec;
        const char* result;
        const char* codecOut;
        const char* sampleFormat;
        int bits;
        int rateOut;
    } rows[] = {
        {"media.flac", {}, "a.wav", 44100, s16, "a.flac", "flac", "s16", 16, 44100},
        {"media.flac", {}, "b.wav", 96000, s24, "b.flac", "flac", "s32", 24, 96000},
        {"media.flac", {}, "c.mp3", 44100, mp3, "c.flac", "flac", "s16", 16, 44100},
        {"media.wav", {}, "d.mp3", 44100, mp3, "d.wav", "pcm_s16le", "s16", 16, 44100},
        {"media.wav", {}, "e.flac", 48000, flac24, "e.wav", "pcm_s24le", "s32", 24, 48000},
        {"media.wav", FormatSettings::BitDepth::float32, "f.flac", 48000, flac, "f.wav", "pcm_f32le", "flt", 32, 48000},
        {"media.wav", FormatSettings::BitDepth::bits32, "g.mp3", 32000, mp3, "g.wav", "pcm_s32le", "s32", 32, 32000},
        {"media.aiff", {}, "h.wav", 44100, s24, "h.aiff", "pcm_s24be", "s32", 24, 44100},
        {"media.aiff", {}, "i.wav", 44100, f32, "i.aiff", "pcm_s32be", "s32", 32, 44100},
        {"media.aiff", FormatSettings::BitDepth::bits16, "j.wav", 44100, s24, "j.aiff", "pcm_s16be", "s16", 16, 44100},
        {"media.m4a", {}, "k.wav", 96000, s24, "k.m4a", "aac", "fltp", 0, 48000},
        {"media.m4a", {}, "l.flac", 22050, flac, "l.m4a", "aac", "fltp", 0, 22050},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.result);
        FormatSettings settings;
        settings.bitDepth = row.depth;
        settings.save();
        const JobReport report = run(row.id, tone(row.source, 0.5, row.rate, row.codec));
        ASSERT_TRUE(report.succeeded) << report.message.toStdString();
        ASSERT_EQ(report.results, QStringList{path(row.result)});
        const ProbedMedia media = probeMedia(path(row.result));
        const ProbedStream audio = media.first(u"audio"_s);
        EXPECT_EQ(audio.codec, QString::fromUtf8(row.codecOut));
        EXPECT_EQ(audio.sampleFormat, QString::fromUtf8(row.sampleFormat));
        if (row.bits) {
            EXPECT_EQ(audio.bitsPerRawSample ? audio.bitsPerRawSample : audio.bitsPerSample, row.bits);
        }
        EXPECT_EQ(audio.sampleRate, row.rateOut);
        EXPECT_EQ(audio.channels, 2);
        EXPECT_NEAR(media.duration, 1.0, 0.05);
        // The samples survive: the tone's peak is still there (near it, through a lossy codec).
        const bool lossy = row.codec == mp3 || row.bits == 0;
        EXPECT_NEAR(samplePeak(path(row.result)), 0.5, lossy ? 0.05 : 0.001);
    }
}

// The AAC bit rate follows the setting (on noise: a pure tone needs far fewer bits than any).
TEST_F(AudioOperationsTest, M4aFollowsTheBitrateSetting)
{
    ASSERT_TRUE(makeMedia(path("noise.wav"), {u"-f"_s, u"lavfi"_s, u"-i"_s, u"anoisesrc=d=2:c=pink:a=0.3"_s, u"-ac"_s, u"2"_s}));
    for (const int kilobits : {96, 192}) {
        FormatSettings settings;
        settings.audioBitrate = kilobits;
        settings.save();
        const JobReport report = run("media.m4a", path("noise.wav"));
        ASSERT_TRUE(report.succeeded) << report.message.toStdString();
        EXPECT_NEAR(double(probeMedia(report.results.value(0)).bitRate), kilobits * 1000.0,
                    kilobits * 150.0);
    }
}

// Tags and the cover go wherever the target has room: M4A atoms, Vorbis comments and a PICTURE
// block, AIFF's ID3 chunk; WAV's INFO list takes the text only.
TEST_F(AudioOperationsTest, TagsAndCoverArtTravel)
{
    ASSERT_TRUE(makeMedia(path("cover.png"), {u"-f"_s, u"lavfi"_s, u"-i"_s, u"testsrc2=size=64x64"_s, u"-frames:v"_s, u"1"_s}));
    const QString source = path("Tagged.mp3");
    ASSERT_TRUE(makeMedia(source, {u"-f"_s, u"lavfi"_s, u"-i"_s, u"sine=d=1"_s, u"-i"_s, path("cover.png"), u"-map"_s,
                                   u"0"_s, u"-map"_s, u"1"_s, u"-c:v"_s, u"copy"_s, u"-disposition:v"_s,
                                   u"attached_pic"_s, u"-metadata"_s, u"title=Low Tide"_s, u"-metadata"_s,
                                   u"artist=Ana Ruiz"_s, u"-metadata"_s, u"album=Coast"_s, u"-metadata"_s,
                                   u"track=3/9"_s, u"-metadata"_s, u"genre=Folk"_s}));
    const struct {
        const char* id;
        const char* result;
        bool cover;
    } rows[] = {{"media.m4a", "Tagged.m4a", true},
                {"media.flac", "Tagged.flac", true},
                {"media.aiff", "Tagged.aiff", true},
                {"media.wav", "Tagged.wav", false}};
    for (const auto& row : rows) {
        SCOPED_TRACE(row.result);
        ASSERT_TRUE(run(row.id, source).succeeded);
        const ProbedMedia media = probeMedia(path(row.result));
        EXPECT_EQ(media.tags.value(u"title"_s), u"Low Tide"_s);
        EXPECT_EQ(media.tags.value(u"artist"_s), u"Ana Ruiz"_s);
        EXPECT_EQ(media.tags.value(u"album"_s), u"Coast"_s);
        EXPECT_TRUE(media.tags.value(u"track"_s).startsWith(u"3"_s)) << media.tags.value(u"track"_s).toStdString();
        EXPECT_EQ(media.tags.value(u"genre"_s), u"Folk"_s);
        const ProbedStream picture = media.first(u"video"_s);
        EXPECT_EQ(picture.attachedPicture, row.cover);
        EXPECT_EQ(media.count(u"video"_s), row.cover ? 1 : 0);
        if (row.cover) {
            EXPECT_EQ(picture.width, 64);
        }
    }
}

// What isn't sound gives a clear message and leaves the folder as it was; a truncated file
// gives what it holds; a movie gives its soundtrack; too many channels are mixed down; joined
// parts of different shapes come out whole.
TEST_F(AudioOperationsTest, OddSources)
{
    makeMedia(path("silent.mp4"), {u"-f"_s, u"lavfi"_s, u"-i"_s, u"testsrc2=size=64x48:d=1"_s});
    writeFile(path("text.mp3"), "just some words, not a sound\n");
    writeFile(path("empty.wav"), {});
    tone("long.mp3", 0.5, 44100, mp3, 4);
    QFile::resize(path("long.mp3"), QFileInfo(path("long.mp3")).size() / 2);
    makeMedia(path("clip.mp4"), {u"-f"_s, u"lavfi"_s, u"-i"_s, u"testsrc2=size=64x48:d=1"_s, u"-f"_s, u"lavfi"_s,
                                 u"-i"_s, u"sine=d=1"_s, u"-shortest"_s});
    // Two MP3s joined end to end, at different rates and channel counts.
    makeMedia(path("part1.mp3"), {u"-f"_s, u"lavfi"_s, u"-i"_s, u"sine=d=1:r=44100"_s});
    makeMedia(path("part2.mp3"), {u"-f"_s, u"lavfi"_s, u"-i"_s, u"sine=d=1:r=48000"_s, u"-ac"_s, u"2"_s});
    writeFile(path("joined.mp3"), readFile(path("part1.mp3")) + readFile(path("part2.mp3")));
    QFile::remove(path("part1.mp3"));
    QFile::remove(path("part2.mp3"));
    makeMedia(path("many.wav"), {u"-f"_s, u"lavfi"_s, u"-i"_s, u"sine=d=1"_s, u"-af"_s, u"pan=hexadecagonal|c0=c0"_s});
    const struct {
        const char* source;
        const char* outcome;  // the failure, or the result's name
    } rows[] = {{"silent.mp4", "No audio in this file"}, {"text.mp3", "Can't read this file"},
                {"empty.wav", "Can't read this file"},   {"long.mp3", "long.flac"},
                {"clip.mp4", "clip.flac"},                {"many.wav", "many.flac"},
                {"joined.mp3", "joined.flac"}};
    for (const auto& row : rows) {
        SCOPED_TRACE(row.source);
        const JobReport report = run("media.flac", path(row.source));
        if (QString::fromUtf8(row.outcome).endsWith(u".flac"_s)) {
            ASSERT_EQ(report.results, QStringList{path(row.outcome)});
            EXPECT_GT(probeMedia(path(row.outcome)).duration, 0.9);
        } else {
            EXPECT_EQ(report.message, QString::fromUtf8(row.outcome));
        }
    }
    EXPECT_NEAR(probeMedia(path("long.flac")).duration, 2.0, 0.3);
    EXPECT_EQ(probeMedia(path("many.flac")).first(u"audio"_s).channels, 8);  // FLAC's most, 7.1
    EXPECT_NEAR(probeMedia(path("joined.flac")).duration, 2.0, 0.1);
    EXPECT_EQ(folderEntries(folder.path()).size(), 11);  // the seven sources and four results
}

// Every sound and movie is offered each target but its own format; only sounds are normalised.
TEST_F(AudioOperationsTest, WhichFilesAreOffered)
{
    const struct {
        const char* id;
        const char* file;  // missing files: their type is their extension's
        bool offered;
    } rows[] = {
        {"media.m4a", "x.m4a", false},  {"media.m4a", "x.wav", true},         {"media.m4a", "x.mkv", true},
        {"media.wav", "x.WAV", false},  {"media.wav", "x.mp4", true},         {"media.aiff", "x.aiff", false},
        {"media.aiff", "x.aif", false}, {"media.aiff", "x.flac", true},       {"media.flac", "x.flac", false},
        {"media.flac", "x.ogg", true},  {"media.flac", "x.txt", false},       {"audio.normalize", "x.mp3", true},
        {"audio.normalize", "x.mp4", false},
    };
    for (const auto& row : rows) {
        const bool offered = !OperationCatalog::refusal(*catalog.find(QString::fromUtf8(row.id)), {path(row.file)});
        EXPECT_EQ(offered, row.offered) << row.id << " " << row.file;
    }
}

// Cancelled in the middle of a file, the conversion stops within the next packet or so.
TEST_F(AudioOperationsTest, CancellationStopsPromptly)
{
    ASSERT_TRUE(makeMedia(path("ten.wav"), {u"-f"_s, u"lavfi"_s, u"-i"_s, u"sine=d=600:r=8000"_s}));
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
    const QStringList sources{tone("a.wav", 0.5, 44100, s16), tone("b.mp3", 0.5, 44100, mp3)};
    QProcess wendrel;
    wendrel.start(QStringLiteral(WENDREL_BINARY), QStringList{u"run"_s, u"audio.normalize"_s} + sources);
    ASSERT_TRUE(wendrel.waitForFinished(120'000));
    EXPECT_EQ(wendrel.exitCode(), 0) << wendrel.readAllStandardError().toStdString();
    EXPECT_EQ(probeMedia(path("a Normalized.wav")).first(u"audio"_s).codec, u"pcm_s16le"_s);
    EXPECT_EQ(probeMedia(path("b Normalized.m4a")).first(u"audio"_s).codec, u"aac"_s);
}
