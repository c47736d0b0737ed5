#include "media/gif/GifOperation.h"
#include "media/gif/GifPlan.h"
#include "media/gif/GifWriter.h"

#include "MediaTestTools.h"
#include "operations/JobRunner.h"
#include "operations/OperationCatalog.h"
#include "operations/OperationContext.h"
#include "operations/OperationError.h"
#include "operations/settings/FormatSettings.h"
#include "support/JobHarness.h"
#include "support/TestEnvironment.h"

#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <array>
#include <cmath>

using namespace wendrel;
using namespace wendrel::test;
using namespace Qt::StringLiterals;

namespace {

QStringList testPicture(const QString& size, const QString& seconds)
{
    return lavfi(u"testsrc2=r=25:s="_s + size + u":d="_s + seconds) << u"-pix_fmt"_s << u"yuv420p"_s;
}

// Red, green and blue bars of 64×90 side by side.
const QStringList colourBars = lavfi(
    u"color=red:s=64x90:d=1[r];color=lime:s=64x90:d=1[g];color=blue:s=64x90:d=1[b];[r][g][b]hstack=3,format=yuv420p"_s);

bool near(const std::array<int, 3>& a, const std::array<int, 3>& b)
{
    return std::abs(a[0] - b[0]) <= 24 && std::abs(a[1] - b[1]) <= 24 && std::abs(a[2] - b[2]) <= 24;
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
    JobReport makeGif(const QString& name) { return runJob(runner, catalog.find(u"video.gif"_s), {path(name)}); }

    QTemporaryDir folder;
    OperationCatalog catalog;
    JobRunner runner;
};

}  // namespace

// What the end-to-end runs don't reach: unknown and anamorphic pixel shapes, no width limit,
// a one-pixel floor, the other turns, and frame rates held to 1..50.
TEST(GifPlanTest, SizesTurnsAndRatesBeyondTheEndToEndRuns)
{
    const struct {
        int width, height;
        AVRational sampleAspect;
        int turns, maxWidth;
        media::GifSize expected;
    } rows[] = {
        {320, 240, {0, 1}, 0, 200, {200, 150}},    // unknown aspect is square
        {1920, 1080, {1, 1}, 2, 0, {1920, 1080}},  // no limit
        {720, 576, {64, 45}, 0, 640, {640, 360}},  // anamorphic widescreen stretched out
        {4000, 2, {1, 1}, 0, 100, {100, 1}},       // never below one pixel
    };
    for (const auto& row : rows) {
        EXPECT_EQ(media::gifSize(row.width, row.height, row.sampleAspect, row.turns, row.maxWidth), row.expected)
            << row.width << "x" << row.height << " turns " << row.turns << " max " << row.maxWidth;
    }
    for (const auto& [degrees, expected] : {std::pair{90.0, 3}, {-180.0, 2}, {-89.6, 1}, {double(NAN), 0}})
        EXPECT_EQ(media::clockwiseQuarterTurns(degrees), expected) << degrees;
    EXPECT_EQ(media::gifFrameRate(0), 1);
    EXPECT_EQ(media::gifFrameRate(240), 50);
}

// Frame counts, sizes, length and looping, as ffprobe reads them.
TEST_F(GifTest, FramesSizesAndLengthFollowTheSettings)
{
    const struct {
        QString name;
        QStringList make;
        int fps, maxWidth, width, height;
        qint64 frames;
    } rows[] = {
        {u"two seconds.mp4"_s, testPicture(u"320x240"_s, u"2"_s), 15, 640, 320, 240, 30},
        {u"wide.mp4"_s, testPicture(u"960x540"_s, u"1"_s), 15, 640, 640, 360, 15},
        {u"forty seconds.mkv"_s, testPicture(u"96x54"_s, u"40"_s), 15, 640, 96, 54, 450},  // 30 s of it
        {u"two seconds.mp4"_s, {}, 10, 100, 100, 75, 20},  // the same clip under other settings
        {u"one frame.mp4"_s, testPicture(u"160x90"_s, u"0.04"_s), 15, 640, 160, 90, 1},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name.toStdString());
        if (!row.make.isEmpty()) {
            ASSERT_TRUE(makeMedia(path(row.name), row.make));
        }
        FormatSettings settings;
        settings.gifFPS = row.fps;
        settings.gifMaxWidth = row.maxWidth;
        settings.save();
        const QByteArray original = readFile(path(row.name));
        const JobReport report = makeGif(row.name);
        ASSERT_TRUE(report.succeeded) << report.message.toStdString();
        EXPECT_EQ(report.results, QStringList{path(row.name.section(u'.', 0, 0) + u".gif"_s)});
        EXPECT_EQ(readFile(path(row.name)), original);

        const ProbedMedia gif = probeMedia(report.results.value(0), true);
        const ProbedStream picture = gif.first(u"video"_s);
        EXPECT_EQ(picture.codec, u"gif");
        EXPECT_EQ(picture.width, row.width);
        EXPECT_EQ(picture.height, row.height);
        EXPECT_NEAR(double(picture.frames), double(row.frames), 1.0);
        if (row.frames > 1) {
            EXPECT_NEAR(gif.duration, double(row.frames) / row.fps, 0.15);
        }
        // Loops forever: the application extension with a loop count of 0.
        EXPECT_TRUE(readFile(report.results.value(0)).contains(QByteArray("NETSCAPE2.0\x03\x01\x00\x00", 16)));
        QFile::remove(report.results.value(0));
    }
}

// Pure colours stay themselves through the palette and dithering, and a turned phone clip
// comes out turned the way players show it.
TEST_F(GifTest, ColoursSurviveAndTurnedClipsStandUpright)
{
    ASSERT_TRUE(makeMedia(path(u"bars.mp4"_s), colourBars));
    const JobReport straight = makeGif(u"bars.mp4"_s);
    ASSERT_TRUE(straight.succeeded) << straight.message.toStdString();
    const std::array<int, 3> pure[] = {{255, 0, 0}, {0, 255, 0}, {0, 0, 255}};
    for (int bar = 0; bar < 3; ++bar)
        EXPECT_TRUE(near(firstPixel(straight.results.value(0), 192, bar * 64 + 32, 45), pure[bar])) << bar;

    ASSERT_TRUE(makeMedia(path(u"phone.mp4"_s),
                          {u"-i"_s, path(u"bars.mp4"_s), u"-c"_s, u"copy"_s, u"-metadata:s:v"_s, u"rotate=90"_s}));
    ASSERT_NE(probeMedia(path(u"phone.mp4"_s)).first(u"video"_s).rotation, 0);
    const JobReport turned = makeGif(u"phone.mp4"_s);
    ASSERT_TRUE(turned.succeeded) << turned.message.toStdString();
    const ProbedStream picture = probeMedia(turned.results.value(0)).first(u"video"_s);
    EXPECT_EQ(picture.width, 90);
    EXPECT_EQ(picture.height, 192);
    // The bars now run top to bottom, in the order the ffmpeg program's own turning gives.
    for (int y = 32; y < 192; y += 64) {
        EXPECT_TRUE(near(firstPixel(turned.results.value(0), 90, 45, y),
                         firstPixel(path(u"phone.mp4"_s), 90, 45, y)))
            << y;
    }
}

// Cancelled during the second pass: the writer stops at the next packet.
TEST_F(GifTest, CancellationStopsPromptly)
{
    ASSERT_TRUE(makeMedia(path(u"long.mp4"_s), testPicture(u"96x54"_s, u"20"_s)));
    QTemporaryDir scratch;
    const auto cancelled = std::make_shared<std::atomic_bool>(false);
    double latest = 0;
    const OperationContext context(scratch.path(), [&](double fraction) {
        latest = fraction;
        *cancelled = *cancelled || fraction > 0.6;
    }, cancelled);
    EXPECT_THROW(media::writeGif(path(u"long.mp4"_s), scratch.filePath(u"long.gif"_s), context, 15, 640),
                 OperationCancelled);
    EXPECT_GT(latest, 0.6);
    EXPECT_LT(latest, 0.7);  // no further than a packet or two
}
