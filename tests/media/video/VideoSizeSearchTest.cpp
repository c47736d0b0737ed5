#include "media/video/compress/VideoSizeSearch.h"

#include <gtest/gtest.h>

using namespace wendrel::media;

namespace {

using Kind = SizeStep::Kind;

// A 1080p clip of 30 s at 30 frames a second with sound, as H.264 to 5 MB: the audio takes
// 128 kbit/s, the index 24,440 bytes, and 98.5 % of the target leaves the picture 1,178,816
// bit/s, too few for 1080 lines (1,866,240 at 0.03 bit per pixel) but plenty for 720 (829,440).
const SizeGoal fiveMB{.targetBytes = 5'000'000, .durationSeconds = 30, .displayWidth = 1920,
                      .displayHeight = 1080, .framesPerSecond = 30};
const SizeAttempt first720{720, 1'178'816, 128'000};

SizeGoal with(SizeGoal goal, auto change)
{
    change(goal);
    return goal;
}

struct Row {
    const char* what;
    SizeGoal goal;
    std::vector<AttemptOutcome> attempts;
    SizeStep expected;
};

TEST(VideoSizeSearchTest, EachStepFollowsFromTheAttemptsSoFar)
{
    const Row rows[] = {
        {"first: the picture's share of 98.5 %, at the tallest height it suits", fiveMB, {}, {Kind::encode, first720}},
        {"within 3 % under the target: kept", fiveMB, {{first720, 4'900'000}}, {.kind = Kind::keep, .chosen = 0}},
        {"exactly the target: kept", fiveMB, {{first720, 5'000'000}}, {.kind = Kind::keep, .chosen = 0}},
        {"over: the picture's measured share scaled to the aim", fiveMB, {{first720, 5'200'000, 4'700'000}},
         {Kind::encode, {720, 1'109'843, 128'000}}},
        {"over, unmeasured: the estimated audio and index come off first", fiveMB, {{first720, 5'200'000}},
         {Kind::encode, {720, 1'109'778, 128'000}}},
        {"far under: tried again higher", fiveMB, {{first720, 4'600'000, 4'100'000}},
         {Kind::encode, {720, 1'272'259, 128'000}}},
        {"a fit, then an overshoot: the scaled rate lies between them", fiveMB,
         {{first720, 4'600'000, 4'100'000}, {{720, 1'272'259, 128'000}, 5'100'000, 4'600'000}},
         {Kind::encode, {720, 1'223'858, 128'000}}},
        {"an estimate outside the two is replaced by their middle", fiveMB,
         {{first720, 4'600'000, 4'100'000}, {{720, 1'272'259, 128'000}, 5'100'000, 2'000'000}},
         {Kind::encode, {720, 1'225'538, 128'000}}},
        {"far over: the rate is too low for 720 lines, so 540", fiveMB, {{first720, 9'000'000, 8'500'000}},
         {Kind::encode, {540, 613'678, 128'000}}},
        {"out of attempts: the largest that fitted", fiveMB,
         {{first720, 4'600'000}, {first720, 5'100'000}, {first720, 4'800'000}, {first720, 5'050'000}},
         {.kind = Kind::keep, .chosen = 2}},
        {"out of attempts, none fitted", fiveMB,
         {{first720, 5'300'000}, {first720, 5'100'000}, {first720, 5'200'000}, {first720, 5'050'000}}, {}},
        {"audio and index alone overflow the target", fiveMB, {{first720, 9'000'000, 100'000}}, {}},
        {"1.5 MB: 32 kbit/s of sound, and 360 lines, the tallest 355 kbit/s suits",
         with(fiveMB, [](SizeGoal& g) { g.targetBytes = 1'500'000; }), {}, {Kind::encode, {360, 355'483, 32'000}}},
        {"0.3 MB: too few bits even for 240 lines", with(fiveMB, [](SizeGoal& g) { g.targetBytes = 300'000; }), {}, {}},
        {"500 MB: the rate stops where more bits no longer show, at the source's height",
         with(fiveMB, [](SizeGoal& g) { g.targetBytes = 500'000'000; }), {}, {Kind::encode, {0, 15'552'000, 128'000}}},
        {"at that rate a file far under the target is as good as it gets",
         with(fiveMB, [](SizeGoal& g) { g.targetBytes = 500'000'000; }), {{{0, 15'552'000, 128'000}, 60'000'000}},
         {.kind = Kind::keep, .chosen = 0}},
        {"a portrait clip limited to 720, HEVC, silent, 60 fps: its own highest rate",
         {.targetBytes = 4'000'000, .durationSeconds = 10, .displayWidth = 1080, .displayHeight = 1920,
          .framesPerSecond = 60, .hasAudio = false, .hevc = true, .maxHeight = 720},
         {}, {Kind::encode, {720, 2'916'000, 0}}},
        {"a limit above the source's height changes nothing",
         with(fiveMB, [](SizeGoal& g) { g.maxHeight = 2160; g.targetBytes = 20'000'000; }), {},
         {Kind::encode, {0, 5'118'816, 128'000}}},
        {"a source picture of 400 kbit/s: its rate, at its height",
         with(fiveMB, [](SizeGoal& g) { g.sourceVideoBitsPerSecond = 400'000; }), {}, {Kind::encode, {0, 400'000, 128'000}}},
        {"a second fit far under, at a higher rate: the content takes no more, the larger is kept", fiveMB,
         {{first720, 3'000'000}, {{720, 2'000'000, 128'000}, 3'600'000}}, {.kind = Kind::keep, .chosen = 1}},
        {"no duration: nothing to plan with", with(fiveMB, [](SizeGoal& g) { g.durationSeconds = 0; }), {}, {}},
    };
    for (const Row& row : rows) {
        const SizeStep step = nextSizeStep(row.goal, row.attempts);
        EXPECT_EQ(step.kind, row.expected.kind) << row.what;
        EXPECT_EQ(step.chosen, row.expected.chosen) << row.what;
        EXPECT_EQ(step.next.maxHeight, row.expected.next.maxHeight) << row.what;
        EXPECT_EQ(step.next.audioBitsPerSecond, row.expected.next.audioBitsPerSecond) << row.what;
        EXPECT_NEAR(double(step.next.videoBitsPerSecond), double(row.expected.next.videoBitsPerSecond), 10.0) << row.what;
    }
}

TEST(VideoSizeSearchTest, TheSoundsShareShrinksWithTheFile)
{
    const std::pair<double, int> rows[] = {
        {1'280'000, 128'000}, {1'279'999, 96'000}, {700'000, 64'000},
        {480'000, 48'000}, {400'000, 32'000},
    };
    for (const auto& [total, audio] : rows)
        EXPECT_EQ(audioRateForTotal(total), audio) << total;
}

}  // namespace
