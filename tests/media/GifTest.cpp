#include "media/gif/GifOperation.h"
#include "media/gif/GifPlan.h"
#include "media/gif/GifWriter.h"

#include "media/video/VideoTestTools.h"
#include "operations/JobRunner.h"
#include "operations/OperationCatalog.h"
#include "operations/OperationContext.h"
#include "operations/OperationError.h"
#include "operations/settings/FormatSettings.h"
#include "support/JobHarness.h"
#include "support/TestEnvironment.h"

#include <QJsonObject>
#include <QProcess>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <cmath>

using namespace wendrel;
using namespace wendrel::test;
using namespace Qt::StringLiterals;

namespace {

// Vertical bars of pure colours, side by side, as a movie.
QStringList colourBars(const QString& size, const QString& seconds)
{
    const QString bar = u"color=%1:s="_s + size + u":r=25:d="_s + seconds;
    return {u"-f"_s, u"lavfi"_s, u"-i"_s,
            bar.arg(u"red"_s) + u"[r];"_s + bar.arg(u"lime"_s) + u"[g];"_s + bar.arg(u"blue"_s) +
                u"[b];[r][g][b]hstack=3,format=yuv420p"_s,
            u"-c:v"_s, u"libx264"_s};
}

QStringList testPicture(const QString& size, const QString& seconds)
{
    return {u"-f"_s, u"lavfi"_s, u"-i"_s, u"testsrc2=s="_s + size + u":r=25:d="_s + seconds, u"-pix_fmt"_s,
            u"yuv420p"_s, u"-c:v"_s, u"libx264"_s};
}

struct Rgb {
    int r, g, b;
};

// The first frame of `path` as the ffmpeg program decodes it (a movie turned upright as players
// show it), one pixel at (x, y) of a `width`-wide picture.
Rgb firstFramePixel(const QString& path, int width, int x, int y)
{
    QProcess ffmpeg;
    ffmpeg.start(u"ffmpeg"_s, {u"-v"_s, u"error"_s, u"-nostdin"_s, u"-i"_s, path, u"-frames:v"_s, u"1"_s, u"-f"_s,
                               u"rawvideo"_s, u"-pix_fmt"_s, u"rgb24"_s, u"-"_s});
    const bool decoded = ffmpeg.waitForFinished(60'000) && ffmpeg.exitCode() == 0;
    const QByteArray pixels = ffmpeg.readAllStandardOutput();
    const qsizetype at = (qsizetype(y) * width + x) * 3;
    if (!decoded || pixels.size() < at + 3) {
        ADD_FAILURE() << "can't decode " << path.toStdString() << ": " << ffmpeg.readAllStandardError().toStdString();
        return {-1, -1, -1};
    }
    const auto channel = [&](qsizetype i) { return int(quint8(pixels[at + i])); };
    return {channel(0), channel(1), channel(2)};
}

bool near(const Rgb& a, const Rgb& b, int tolerance)
{
    return std::abs(a.r - b.r) <= tolerance && std::abs(a.g - b.g) <= tolerance && std::abs(a.b - b.b) <= tolerance;
}

class GifTest : public ::testing::Test {
protected:
    void SetUp() override { registerGifOperation(catalog); }
    void TearDown() override
    {
        FormatSettings{}.save();
        EXPECT_TRUE(leftoverScratchFolders().isEmpty());
    }

    QString path(const QString& name) const { return folder.filePath(name); }

    JobReport makeGif(const QString& source) { return runJob(runner, catalog.find(u"video.gif"_s), {source}); }

    QTemporaryDir folder;
    OperationCatalog catalog;
    JobRunner runner;
};

}  // namespace

TEST(GifPlanTest, SizesFollowTheShownPictureWithinTheWidthLimit)
{
    const struct {
        int width, height;
        AVRational sampleAspect;
        int turns, maxWidth;
        media::GifSize expected;
    } rows[] = {
        {1920, 1080, {1, 1}, 0, 640, {640, 360}},
        {320, 240, {0, 1}, 0, 640, {320, 240}},   // never enlarged; unknown aspect is square
        {1920, 1080, {1, 1}, 1, 640, {640, 1138}},  // turned: the limit applies to the new width
        {1920, 1080, {1, 1}, 3, 400, {400, 711}},
        {1920, 1080, {1, 1}, 2, 0, {1920, 1080}},   // no limit
        {720, 576, {64, 45}, 0, 0, {1024, 576}},    // anamorphic widescreen stretched out
        {720, 576, {64, 45}, 0, 640, {640, 360}},
        {4000, 2, {1, 1}, 0, 100, {100, 1}},        // never below one pixel
    };
    for (const auto& row : rows) {
        EXPECT_EQ(media::gifSize(row.width, row.height, row.sampleAspect, row.turns, row.maxWidth), row.expected)
            << row.width << "x" << row.height << " turns " << row.turns << " max " << row.maxWidth;
    }
    // Counterclockwise display angles to clockwise quarter turns; frame rates held to 1..50.
    const std::pair<double, int> turns[] = {{0, 0}, {-90, 1}, {90, 3}, {180, 2}, {-180, 2}, {-89.6, 1}, {NAN, 0}};
    for (const auto& [degrees, expected] : turns)
        EXPECT_EQ(media::clockwiseQuarterTurns(degrees), expected) << degrees;
    EXPECT_EQ(media::gifFrameRate(0), 1);
    EXPECT_EQ(media::gifFrameRate(15), 15);
    EXPECT_EQ(media::gifFrameRate(240), 50);
    // Scaled before turning, so the scale is given the unturned size.
    EXPECT_EQ(media::gifPlan(1920, 1080, {1, 1}, -90, 10, 640).pictureFilters(),
              "fps=10,scale=1138:640:flags=lanczos,transpose=clock,setsar=1");
}

// Frame counts, sizes, length and looping of GIFs from several movies, checked by ffprobe.
TEST_F(GifTest, FramesSizesAndLengthFollowTheSettings)
{
    const struct {
        const char* name;
        QStringList make;
        int fps, maxWidth;
        int width, height;
        qint64 frames;
    } rows[] = {
        {"two seconds.mp4", testPicture(u"320x240"_s, u"2"_s), 15, 640, 320, 240, 30},
        {"wide.mp4", testPicture(u"960x540"_s, u"1"_s), 15, 640, 640, 360, 15},
        {"forty seconds.mkv", testPicture(u"96x54"_s, u"40"_s), 15, 640, 96, 54, 450},  // the first 30 s only
        {"settings.mp4", testPicture(u"320x240"_s, u"2"_s), 10, 100, 100, 75, 20},
        {"one frame.mp4", testPicture(u"160x90"_s, u"0.04"_s), 15, 640, 160, 90, 1},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        ASSERT_TRUE(makeClip(path(QString::fromUtf8(row.name)), row.make));
        FormatSettings settings;
        settings.gifFPS = row.fps;
        settings.gifMaxWidth = row.maxWidth;
        settings.save();
        const QByteArray original = readFile(path(QString::fromUtf8(row.name)));
        const JobReport report = makeGif(path(QString::fromUtf8(row.name)));
        ASSERT_TRUE(report.succeeded) << report.message.toStdString();
        ASSERT_EQ(report.results.size(), 1);
        EXPECT_TRUE(report.results.first().endsWith(QString::fromUtf8(row.name).section(u'.', 0, 0) + u".gif"_s));
        EXPECT_EQ(readFile(path(QString::fromUtf8(row.name))), original);

        const QJsonObject gif = probe(report.results.first());
        const QJsonObject picture = streamOf(gif, u"video"_s);
        EXPECT_EQ(picture[u"codec_name"].toString(), u"gif");
        EXPECT_EQ(picture[u"width"].toInt(), row.width);
        EXPECT_EQ(picture[u"height"].toInt(), row.height);
        EXPECT_NEAR(double(pictureTimes(report.results.first()).size()), double(row.frames), 1.0);
        if (row.frames > 1) {
            const double duration = gif[u"format"][u"duration"].toString().toDouble();
            EXPECT_NEAR(duration, double(row.frames) / row.fps, 0.15);
        }
        // Loops forever: the application extension with a loop count of 0.
        EXPECT_TRUE(readFile(report.results.first()).contains(QByteArray("NETSCAPE2.0\x03\x01\x00\x00", 16)));
    }
}

// Pure colours stay themselves through the palette and dithering, and a turned phone clip
// comes out turned the way players show it.
TEST_F(GifTest, ColoursSurviveAndTurnedClipsStandUpright)
{
    ASSERT_TRUE(makeClip(path(u"bars.mp4"_s), colourBars(u"64x90"_s, u"1"_s)));
    const JobReport straight = makeGif(path(u"bars.mp4"_s));
    ASSERT_TRUE(straight.succeeded) << straight.message.toStdString();
    const Rgb pure[] = {{255, 0, 0}, {0, 255, 0}, {0, 0, 255}};
    for (int bar = 0; bar < 3; ++bar) {
        const Rgb seen = firstFramePixel(straight.results.first(), 192, bar * 64 + 32, 45);
        EXPECT_TRUE(near(seen, pure[bar], 24)) << bar << ": " << seen.r << "," << seen.g << "," << seen.b;
    }

    ASSERT_TRUE(makeClip(path(u"phone.mp4"_s),
                          {u"-i"_s, path(u"bars.mp4"_s), u"-c"_s, u"copy"_s, u"-metadata:s:v"_s, u"rotate=90"_s}));
    ASSERT_NE(rotationOf(streamOf(probe(path(u"phone.mp4"_s)), u"video"_s)), 0);
    const JobReport turned = makeGif(path(u"phone.mp4"_s));
    ASSERT_TRUE(turned.succeeded) << turned.message.toStdString();
    const QJsonObject picture = streamOf(probe(turned.results.first()), u"video"_s);
    EXPECT_EQ(picture[u"width"].toInt(), 90);
    EXPECT_EQ(picture[u"height"].toInt(), 192);
    // The bars now run top to bottom, in the order the ffmpeg program's own turning gives.
    for (int bar = 0; bar < 3; ++bar) {
        const int y = bar * 64 + 32;
        const Rgb player = firstFramePixel(path(u"phone.mp4"_s), 90, 45, y);
        const Rgb seen = firstFramePixel(turned.results.first(), 90, 45, y);
        EXPECT_TRUE(near(seen, player, 24)) << bar << ": " << seen.r << "," << seen.g << "," << seen.b;
    }
}

TEST_F(GifTest, BadInputsGiveClearMessagesAndLeaveNothing)
{
    ASSERT_TRUE(makeClip(path(u"sound.mp4"_s), {u"-f"_s, u"lavfi"_s, u"-i"_s, u"sine=d=1"_s, u"-c:a"_s, u"aac"_s}));
    ASSERT_TRUE(makeClip(path(u"strange.mp4"_s), testPicture(u"64x48"_s, u"1"_s)));
    // A picture in a codec nobody knows: the sample entry's code renamed.
    writeFile(path(u"strange.mp4"_s), readFile(path(u"strange.mp4"_s)).replace("avc1", "zzzz"));
    writeFile(path(u"notes.mp4"_s), "just some text, not a movie\n");
    writeFile(path(u"empty.mov"_s), {});
    const std::pair<QString, QString> cases[] = {
        {u"sound.mp4"_s, u"No video in this file"_s},
        {u"strange.mp4"_s, u"Unsupported video format"_s},
        {u"notes.mp4"_s, u"Can't read this file"_s},
        {u"empty.mov"_s, u"Can't read this file"_s},
    };
    for (const auto& [name, message] : cases) {
        const QByteArray original = readFile(path(name));
        const JobReport report = makeGif(path(name));
        EXPECT_FALSE(report.succeeded) << name.toStdString();
        EXPECT_EQ(report.message, message) << name.toStdString();
        EXPECT_EQ(readFile(path(name)), original);
    }
    EXPECT_EQ(folderEntries(folder.path()),
              (QStringList{u"empty.mov"_s, u"notes.mp4"_s, u"sound.mp4"_s, u"strange.mp4"_s}));
}

// Cancelled in the second pass: the writer stops at the next packet.
TEST_F(GifTest, CancellationStopsPromptly)
{
    ASSERT_TRUE(makeClip(path(u"long.mp4"_s), testPicture(u"96x54"_s, u"20"_s)));
    QTemporaryDir scratch;
    const auto cancelled = std::make_shared<std::atomic_bool>(false);
    double cancelledAt = -1;
    double latest = 0;
    const OperationContext context(scratch.path(), [&](double fraction) {
        latest = fraction;
        if (fraction > 0.6 && !*cancelled) {
            cancelledAt = fraction;
            *cancelled = true;
        }
    }, cancelled);
    EXPECT_THROW(media::writeGif(path(u"long.mp4"_s), scratch.filePath(u"long.gif"_s), context, 15, 640),
                 OperationCancelled);
    EXPECT_GT(cancelledAt, 0.6);
    EXPECT_LT(latest, 0.7);  // no further than a packet or two
}
