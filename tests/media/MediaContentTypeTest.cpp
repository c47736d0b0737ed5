#include "MediaTestTools.h"

#include "operations/ContentType.h"
#include "support/ExternalTool.h"
#include "support/TestEnvironment.h"

#include <QTemporaryDir>

#include <gtest/gtest.h>

using namespace wendrel;
using namespace wendrel::test;
using namespace Qt::StringLiterals;

namespace {

const QStringList tone{u"-f"_s, u"lavfi"_s, u"-i"_s, u"sine=frequency=440:duration=1"_s};
const QStringList picturesAndTone{u"-f"_s, u"lavfi"_s, u"-i"_s, u"testsrc2=size=160x120:rate=10:duration=1"_s,
                                  u"-f"_s, u"lavfi"_s, u"-i"_s, u"sine=frequency=440:duration=1"_s};

}  // namespace

// Real files as the ffmpeg program writes them: movies are movies, sound is sound, both are
// audio or video content, and a file's content decides where its name is ambiguous (.ts is
// also the name of translation sources).
TEST(MediaContentType, RealFilesFallIntoTheirFamilies)
{
    QTemporaryDir folder;
    const struct {
        const char* name;
        QStringList arguments;
        bool movie;
        bool audio;
    } rows[] = {
        {"clip.mp4", picturesAndTone, true, false},
        {"clip.mov", picturesAndTone, true, false},
        {"clip.mkv", picturesAndTone, true, false},
        {"clip.webm", picturesAndTone + QStringList{u"-c:v"_s, u"libvpx"_s, u"-deadline"_s, u"realtime"_s}, true, false},
        {"clip.avi", picturesAndTone, true, false},
        {"clip.ts", picturesAndTone, true, false},
        {"song.wav", tone, false, true},
        {"song.mp3", tone, false, true},
        {"song.flac", tone, false, true},
        {"song.m4a", tone, false, true},
        {"song.aiff", tone, false, true},
        {"song.ogg", tone, false, true},
        {"song.opus", tone, false, true},
        {"song.mka", tone, false, true},
    };
    for (const auto& row : rows) {
        const QString path = folder.filePath(QString::fromUtf8(row.name));
        ASSERT_TRUE(makeMedia(path, row.arguments)) << row.name;
        const ContentType type = ContentType::ofFile(path);
        EXPECT_EQ(type.conformsTo(ContentType::movie()), row.movie) << row.name << " " << type.name().toStdString();
        EXPECT_EQ(type.conformsTo(ContentType::audio()), row.audio) << row.name << " " << type.name().toStdString();
        EXPECT_TRUE(type.conformsTo(ContentType::audiovisualContent())) << row.name;
        EXPECT_FALSE(type.conformsTo(ContentType::image())) << row.name;
    }

    // A conclusive name is taken at its word: text called .mp4 is a movie to the ring, and the
    // media entries refuse it with their own message when they open it.
    const QString notAMovie = folder.filePath(u"notes.mp4"_s);
    writeFile(notAMovie, "just some text\n");
    EXPECT_TRUE(ContentType::ofFile(notAMovie).conformsTo(ContentType::movie()));
    // A playlist only names other files.
    const QString playlist = folder.filePath(u"mix.pls"_s);
    writeFile(playlist, "[playlist]\nFile1=song.mp3\nNumberOfEntries=1\nVersion=2\n");
    EXPECT_FALSE(ContentType::ofFile(playlist).conformsTo(ContentType::audiovisualContent()));
}

// The tools every media test stands on: a tone's peak is exact through integer and float
// encodings, and the probe reads layout, rate, depth, pictures, turning and tags.
TEST(MediaTestTools, TonesHaveExactPeaksAndProbesReadWhatWasWritten)
{
    QTemporaryDir folder;
    const struct {
        const char* name;
        double peak;
        int rate;
        int channels;
        QStringList codec;
        QString sampleFormat;
        int bits;
    } tones[] = {
        {"half.wav", 0.5, 48000, 2, {u"-c:a"_s, u"pcm_s16le"_s}, u"s16"_s, 16},
        {"quarter.flac", 0.25, 44100, 1, {u"-c:a"_s, u"flac"_s, u"-sample_fmt"_s, u"s32"_s}, u"s32"_s, 24},
        {"float.wav", 0.7, 22050, 6, {u"-c:a"_s, u"pcm_f32le"_s}, u"flt"_s, 32},
    };
    for (const auto& tone : tones) {
        const QString path = folder.filePath(QString::fromUtf8(tone.name));
        ASSERT_TRUE(makeTone(path, 1.5, tone.peak, tone.rate, tone.channels, tone.codec));
        EXPECT_EQ(samplePeak(path), float(tone.peak)) << tone.name;
        const ProbedMedia media = probeMedia(path);
        ASSERT_EQ(media.count(u"audio"_s), 1) << tone.name;
        const ProbedStream audio = media.first(u"audio"_s);
        EXPECT_EQ(audio.channels, tone.channels) << tone.name;
        EXPECT_EQ(audio.sampleRate, tone.rate) << tone.name;
        EXPECT_EQ(audio.sampleFormat, tone.sampleFormat) << tone.name;
        EXPECT_EQ(audio.bitDepth(), tone.bits) << tone.name;
        EXPECT_NEAR(media.duration, 1.5, 0.01) << tone.name;
    }

    // A picture blue in its top-left quarter, turned by its display matrix; where the blue lands
    // when ffmpeg decodes it upright says which way a player turns it.
    const QString upright = folder.filePath(u"upright.mp4"_s);
    const QString turned = folder.filePath(u"turned.mp4"_s);
    ASSERT_TRUE(makeMedia(upright, {u"-f"_s, u"lavfi"_s, u"-i"_s,
                                    u"color=red:size=160x120:rate=10:duration=1,drawbox=w=80:h=60:color=blue:t=fill"_s,
                                    u"-f"_s, u"lavfi"_s, u"-i"_s, u"sine=duration=1"_s, u"-c:v"_s, u"libx264"_s,
                                    u"-pix_fmt"_s, u"yuv444p"_s, u"-metadata"_s, u"title=Turned"_s}));
    ASSERT_TRUE(makeMedia(turned, {u"-i"_s, upright, u"-c"_s, u"copy"_s, u"-metadata:s:v:0"_s, u"rotate=90"_s}));
    const ProbedMedia media = probeMedia(turned, true);
    EXPECT_TRUE(media.formatName.contains(u"mp4"));
    EXPECT_EQ(media.tags.value(u"title"_s), u"Turned"_s);
    const ProbedStream video = media.first(u"video"_s);
    EXPECT_EQ(video.codec, u"h264"_s);
    EXPECT_EQ(video.width, 160);
    EXPECT_EQ(video.height, 120);
    EXPECT_EQ(video.frames, 10);
    EXPECT_EQ(media.first(u"audio"_s).codec, u"aac"_s);
    EXPECT_EQ(media.first(u"subtitle"_s).type, QString());

    const ToolOutcome shown = runExternalTool(u"ffmpeg"_s, {u"-v"_s, u"error"_s, u"-i"_s, turned, u"-frames:v"_s, u"1"_s, u"-an"_s,
                                                            u"-f"_s, u"rawvideo"_s, u"-pix_fmt"_s, u"gray"_s, u"-"_s});
    ASSERT_EQ(shown.out.size(), 120 * 160);
    const auto isBlue = [&](int x, int y) { return quint8(shown.out.at(y * 120 + x)) < 60; };  // red is lighter
    const int blueCorner = isBlue(10, 10) ? 0 : isBlue(110, 10) ? 90 : isBlue(110, 150) ? 180 : 270;
    EXPECT_EQ(video.rotation, blueCorner);
    EXPECT_NE(video.rotation, 0);
}
