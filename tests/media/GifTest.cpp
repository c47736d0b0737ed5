#include "media/gif/GifOperation.h"
#include "media/gif/GifPlan.h"
#include "media/gif/GifWriter.h"

#include "MediaTestTools.h"
#include "operations/JobRunner.h"
#include "operations/OperationCatalog.h"
#include "operations/OperationContext.h"
#include "operations/OperationError.h"
#include "operations/settings/FormatSettings.h"
#include "support/ExternalTool.h"
#include "support/JobHarness.h"
#include "support/TestEnvironment.h"

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
    return {u"-f"_s, u"lavfi"_s, u"-i"_s, u"testsrc2=r=25:s="_s + size + u":d="_s + seconds, u"-pix_fmt"_s, u"yuv420p"_s};
}

// Red, green and blue bars of 64×90 side by side.
const QStringList colourBars{u"-f"_s, u"lavfi"_s, u"-i"_s,
                             u"color=red:s=64x90:d=1[r];color=lime:s=64x90:d=1[g];color=blue:s=64x90:d=1[b];"
                             "[r][g][b]hstack=3,format=yuv420p"_s};

// One pixel of the first frame as the ffmpeg program decodes it (turned upright, as players
// show it), in a picture `width` wide.
std::array<int, 3> firstFramePixel(const QString& path, int width, int x, int y)
{
    const QStringList arguments{u"-v"_s, u"error"_s, u"-i"_s, path, u"-frames:v"_s, u"1"_s,
                                u"-f"_s, u"rawvideo"_s, u"-pix_fmt"_s, u"rgb24"_s, u"-"_s};
    const ToolOutcome decoded = runExternalTool(u"ffmpeg"_s, arguments);
    const qsizetype at = (qsizetype(y) * width + x) * 3;
    if (!decoded.succeeded() || decoded.out.size() < at + 3) {
        ADD_FAILURE() << decoded.describe(u"ffmpeg"_s, arguments).toStdString();
        return {-1, -1, -1};
    }
    return {quint8(decoded.out[at]), quint8(decoded.out[at + 1]), quint8(decoded.out[at + 2])};
}

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

TEST(GifPlanTest, SizesFollowTheShownPictureWithinTheWidthLimit)
{
    const struct {
        int width, height;
        AVRational sampleAspect;
        int turns, maxWidth;
        media::GifSize expected;
    } rows[] = {
        {1920, 1080, {1, 1}, 0, 640, {640, 360}},
        {320, 240, {0, 1}, 0, 640, {320, 240}},      // never enlarged; unknown aspect is square
        {1920, 1080, {1, 1}, 1, 640, {640, 1138}},   // turned: the limit is on the new width
        {1920, 1080, {1, 1}, 2, 0, {1920, 1080}},    // no limit
        {720, 576, {64, 45}, 0, 640, {640, 360}},    // anamorphic widescreen stretched out
        {4000, 2, {1, 1}, 0, 100, {100, 1}},         // never below one pixel
    };
    for (const auto& row : rows) {
        EXPECT_EQ(media::gifSize(row.width, row.height, row.sampleAspect, row.turns, row.maxWidth), row.expected)
            << row.width << "x" << row.height << " turns " << row.turns << " max " << row.maxWidth;
    }
    // Counterclockwise display angles to clockwise quarter turns; frame rates held to 1..50.
    const std::pair<double, int> turns[] = {{0, 0}, {-90, 1}, {90, 3}, {-180, 2}, {-89.6, 1}, {NAN, 0}};
    for (const auto& [degrees, expected] : turns)
        EXPECT_EQ(media::clockwiseQuarterTurns(degrees), expected) << degrees;
    EXPECT_EQ(media::gifFrameRate(0), 1);
    EXPECT_EQ(media::gifFrameRate(240), 50);
    // Scaled before turning, so the scale is given the unturned size.
    EXPECT_EQ(media::gifPlan(1920, 1080, {1, 1}, -90, 10, 640).pictureFilters(),
              "fps=10,scale=1138:640:flags=lanczos,transpose=clock,setsar=1");
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
        {u"settings.mp4"_s, testPicture(u"320x240"_s, u"2"_s), 10, 100, 100, 75, 20},
        {u"one frame.mp4"_s, testPicture(u"160x90"_s, u"0.04"_s), 15, 640, 160, 90, 1},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name.toStdString());
        ASSERT_TRUE(makeMedia(path(row.name), row.make));
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
        EXPECT_TRUE(near(firstFramePixel(straight.results.value(0), 192, bar * 64 + 32, 45), pure[bar])) << bar;

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
        EXPECT_TRUE(near(firstFramePixel(turned.results.value(0), 90, 45, y),
                         firstFramePixel(path(u"phone.mp4"_s), 90, 45, y)))
            << y;
    }
}

TEST_F(GifTest, BadInputsGiveClearMessagesAndLeaveNothing)
{
    ASSERT_TRUE(makeMedia(path(u"sound.mp4"_s), {u"-f"_s, u"lavfi"_s, u"-i"_s, u"sine=d=1"_s}));
    ASSERT_TRUE(makeMedia(path(u"strange.mp4"_s), testPicture(u"64x48"_s, u"1"_s)));
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
        const JobReport report = makeGif(name);
        EXPECT_FALSE(report.succeeded) << name.toStdString();
        EXPECT_EQ(report.message, message) << name.toStdString();
        EXPECT_EQ(readFile(path(name)), original);
    }
    EXPECT_EQ(folderEntries(folder.path()),
              (QStringList{u"empty.mov"_s, u"notes.mp4"_s, u"sound.mp4"_s, u"strange.mp4"_s}));
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
