#include "ring/HidePolicy.h"
#include "ring/RingGeometry.h"
#include "ring/RingPlacement.h"

#include <gtest/gtest.h>

#include <cmath>
#include <numbers>

using namespace wendrel;
using namespace wendrel::RingGeometry;

namespace {

// The offset at `degrees` clockwise from straight up, `radius` from the centre.
std::pair<double, double> at(double degrees, double radius)
{
    const double radians = degrees * std::numbers::pi / 180;
    return {radius * std::sin(radians), radius * std::cos(radians)};
}

}  // namespace

// Only the band between the disc and the edge hits; segments run clockwise from straight up.
TEST(RingGeometry, SegmentsRunClockwiseFromStraightUpWithinTheBand)
{
    const struct {
        double degrees;
        double radius;
        int count;
        std::optional<int> expected;
    } rows[] = {
        {0, 66, 4, std::nullopt}, {0, 67, 4, 0}, {0, 197.9, 4, 0}, {0, 198, 4, std::nullopt}, {0, 0, 4, std::nullopt},
        {0, 100, 0, std::nullopt}, {44, 120, 4, 0}, {46, 120, 4, 1}, {350, 120, 4, 0},
        {90, 120, 4, 1}, {180, 120, 4, 2}, {270, 120, 4, 3},  // right, straight down, left
        {1, 120, 10, 0}, {19, 120, 10, 1}, {341, 120, 10, 9},
    };
    for (const auto& row : rows) {
        const auto [dx, dy] = at(row.degrees, row.radius);
        EXPECT_EQ(segmentAt(dx, dy, row.count), row.expected) << row.degrees << "° at " << row.radius << " of " << row.count;
    }
}

TEST(RingGeometry, ChildrenSitOnAnArcAroundTheGroupsAngle)
{
    // Group at segment 1 of 4 (90 degrees), three children 40 degrees apart: 50, 90, 130.
    const ChildArc arc = childArc(1, 4, 3);
    EXPECT_NEAR(arc.childAngle(0), std::numbers::pi / 180 * 50, 1e-9);
    const auto child = [&](double degrees, double radius) {
        const auto [dx, dy] = at(degrees, radius);
        return childAt(dx, dy, arc);
    };
    EXPECT_EQ(child(50, 240), 0);
    EXPECT_EQ(child(90, 240), 1);
    EXPECT_EQ(child(129, 240), 2);
    EXPECT_EQ(child(145, 240), 2);              // within the slack beyond the end
    EXPECT_EQ(child(175, 240), std::nullopt);   // beyond it
    EXPECT_EQ(child(90, 290), std::nullopt);    // out of reach
    EXPECT_EQ(child(90, 289), 1);
}

TEST(RingGeometry, ManyChildrenShareANarrowerStep)
{
    const ChildArc normal = childArc(0, 10, 7);
    EXPECT_NEAR(normal.step * 180 / std::numbers::pi, 40, 1e-9);
    const ChildArc crowded = childArc(0, 10, 12);
    EXPECT_NEAR(crowded.step * 12 * 180 / std::numbers::pi, 300, 1e-9);
    EXPECT_NEAR(crowded.margin, crowded.step / 2, 1e-12);
    // Across the top, where angles wrap from 360 back to 0.
    const auto [dx, dy] = at(355, 240);
    EXPECT_EQ(childAt(dx, dy, crowded), 5);
}

TEST(RingPlacement, CentresOnThePointAndStaysOnTheScreen)
{
    const QList<ScreenArea> one{{QRect(0, 0, 1920, 1080), QRect(0, 30, 1920, 1050)}};
    EXPECT_EQ(ringPanelOrigin({960, 540}, one, 544), QPoint(688, 268));
    EXPECT_EQ(ringPanelOrigin({10, 540}, one, 544), QPoint(0, 268));        // flush left
    EXPECT_EQ(ringPanelOrigin({1915, 1075}, one, 544), QPoint(1376, 536));  // flush right and bottom
    EXPECT_EQ(ringPanelOrigin({900, 5}, one, 544), QPoint(628, 30));        // below the top panel
}

TEST(RingPlacement, UsesTheScreenThatHoldsThePoint)
{
    const QList<ScreenArea> two{{QRect(0, 0, 1920, 1080), QRect(0, 0, 1920, 1080)},
                                {QRect(1920, 0, 1280, 1024), QRect(1920, 0, 1280, 1000)}};
    EXPECT_EQ(ringPanelOrigin({1930, 500}, two, 544), QPoint(1920, 228));
    EXPECT_EQ(ringPanelOrigin({3190, 990}, two, 544), QPoint(2656, 456));
    EXPECT_EQ(ringPanelOrigin({1900, 500}, two, 544), QPoint(1376, 228));  // stays on the first
    EXPECT_EQ(ringPanelOrigin({5000, 5000}, two, 544), QPoint(1376, 536));  // off every screen: the first
}

TEST(HidePolicy, OutcomesStayLongEnoughToRead)
{
    using State = JobStatus::State;
    EXPECT_EQ(hideAfterJob(State::finished, false).delaySeconds, 2.0);
    EXPECT_TRUE(hideAfterJob(State::finished, false).resultShown);
    EXPECT_EQ(hideAfterJob(State::failed, false).delaySeconds, 4.0);
    EXPECT_EQ(hideAfterJob(State::finished, true).delaySeconds, std::nullopt);
    EXPECT_EQ(hideAfterJob(State::failed, true).delaySeconds, std::nullopt);
    EXPECT_EQ(hideAfterJob(State::running, false).delaySeconds, 0.5);
    EXPECT_FALSE(hideAfterJob(State::running, false).resultShown);
    EXPECT_EQ(hideAfterJob(State::idle, false).delaySeconds, std::nullopt);
}
