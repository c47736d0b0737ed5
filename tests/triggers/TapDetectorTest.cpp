#include "triggers/ModifierTapDetector.h"

#include <gtest/gtest.h>

using namespace wendrel;
using namespace std::chrono_literals;

namespace {

constexpr ModifierFlags shift = Modifier::shift;
constexpr ModifierFlags control = Modifier::control;
constexpr ModifierFlags capsLock = 0x10000;

const TriggerClock::time_point t0 = TriggerClock::now();

TriggerClock::time_point at(std::chrono::milliseconds offset) { return t0 + offset; }

}  // namespace

TEST(ModifierTapDetector, ReleaseWithinHalfASecondIsATapInclusive)
{
    ModifierTapDetector detector;
    EXPECT_EQ(detector.feed(shift, at(0ms)), std::nullopt);
    EXPECT_EQ(detector.feed(0, at(500ms)), shift);

    EXPECT_EQ(detector.feed(shift, at(1000ms)), std::nullopt);
    EXPECT_EQ(detector.feed(0, at(1510ms)), std::nullopt);
}

TEST(ModifierTapDetector, EveryKeyPressedTogetherBelongsToTheCombination)
{
    ModifierTapDetector detector;
    detector.feed(shift, at(0ms));
    detector.feed(shift | control, at(100ms));
    detector.feed(control, at(200ms));
    EXPECT_EQ(detector.feed(0, at(300ms)), shift | control);
}

TEST(ModifierTapDetector, TheLimitCountsFromTheFirstKey)
{
    ModifierTapDetector detector;
    detector.feed(shift, at(0ms));
    detector.feed(shift | control, at(450ms));
    EXPECT_EQ(detector.feed(0, at(520ms)), std::nullopt);
}

TEST(ModifierTapDetector, KeyHeldWhenArmedCountsOnlyAfterItsRelease)
{
    ModifierTapDetector detector;
    detector.arm(shift);
    EXPECT_EQ(detector.feed(0, at(100ms)), std::nullopt);
    detector.feed(shift, at(200ms));
    EXPECT_EQ(detector.feed(0, at(300ms)), shift);
}

TEST(ModifierTapDetector, LockKeysNeverCount)
{
    ModifierTapDetector detector;
    EXPECT_EQ(detector.feed(capsLock, at(0ms)), std::nullopt);
    detector.feed(shift | capsLock, at(10ms));
    EXPECT_EQ(detector.feed(capsLock, at(100ms)), shift);
}

TEST(DoubleTapDetector, SecondTapWithinFourTenthsInclusive)
{
    DoubleTapDetector detector;
    detector.feed(shift, at(900ms));
    EXPECT_EQ(detector.feed(0, at(1000ms)), std::nullopt);
    detector.feed(shift, at(1300ms));
    EXPECT_EQ(detector.feed(0, at(1400ms)), shift);
}

TEST(DoubleTapDetector, LateSecondTapStartsANewPair)
{
    DoubleTapDetector detector;
    detector.feed(shift, at(900ms));
    detector.feed(0, at(1000ms));
    detector.feed(shift, at(1300ms));
    EXPECT_EQ(detector.feed(0, at(1410ms)), std::nullopt);
    detector.feed(shift, at(1500ms));
    EXPECT_EQ(detector.feed(0, at(1600ms)), shift);  // paired with the late one
}

TEST(DoubleTapDetector, ThreeTapsOpenOnceAndAFourthAgain)
{
    DoubleTapDetector detector;
    int opened = 0;
    for (int tap = 0; tap < 4; ++tap) {
        detector.feed(shift, at(std::chrono::milliseconds(tap * 200)));
        opened += detector.feed(0, at(std::chrono::milliseconds(tap * 200 + 100))).has_value();
        EXPECT_EQ(opened, (tap + 1) / 2) << "after tap " << tap + 1;
    }
}

TEST(DoubleTapDetector, DifferentKeysAreNoPair)
{
    DoubleTapDetector detector;
    detector.feed(shift, at(0ms));
    detector.feed(0, at(100ms));
    detector.feed(control, at(200ms));
    EXPECT_EQ(detector.feed(0, at(300ms)), std::nullopt);
}

TEST(DoubleTapDetector, ResetForgetsTheFirstHalf)
{
    DoubleTapDetector detector;
    detector.feed(shift, at(0ms));
    detector.feed(0, at(100ms));
    detector.reset(0);
    detector.feed(shift, at(200ms));
    EXPECT_EQ(detector.feed(0, at(300ms)), std::nullopt);
}
