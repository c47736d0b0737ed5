#include "imaging/pdf/compress/PdfCompressionLevels.h"
#include "imaging/pdf/compress/PlacementGeometry.h"

#include <gtest/gtest.h>

#include <cmath>
#include <numbers>
#include <stdexcept>
#include <vector>

using namespace wendrel;

namespace {

// The ladder takes the first level that fits, else the smallest; it never compresses past the
// level it takes.
TEST(PdfCompressionChoice, TheLadderTakesTheFirstFitElseTheSmallest)
{
    const struct {
        std::vector<qint64> sizes;  // what each level of the ladder weighs
        qint64 target;
        std::size_t chosen;
        std::size_t tried;
    } cases[] = {
        {{900, 700, 500, 300, 200}, 1000, 0, 1},
        {{900, 700, 500, 300, 200}, 700, 1, 2},
        {{900, 700, 500, 300, 200}, 499, 3, 4},
        {{900, 700, 500, 300, 200}, 100, 4, 5},
        {{500, 400, 450, 420, 410}, 100, 1, 5},  // a stronger level can come out larger
        {{300, 300, 300, 300, 300}, 0, 0, 5},    // of equals, the earlier
        {{300, 250, 200, 150, 100}, 0, 4, 5},    // zero asks for the smallest
    };
    for (const auto& testCase : cases) {
        std::vector<PdfCompressionLevel> tried;
        const std::size_t chosen = chooseLadderLevel(pdfTargetSizeLadder, testCase.target, [&](const PdfCompressionLevel& level) {
            tried.push_back(level);
            return testCase.sizes[tried.size() - 1];
        });
        EXPECT_EQ(chosen, testCase.chosen) << "target " << testCase.target;
        ASSERT_EQ(tried.size(), testCase.tried) << "target " << testCase.target;
        for (std::size_t i = 0; i < tried.size(); ++i)
            EXPECT_EQ(tried[i], pdfTargetSizeLadder[i]);
    }

    int calls = 0;
    EXPECT_THROW(chooseLadderLevel(pdfTargetSizeLadder, 0,
                                   [&](const PdfCompressionLevel&) -> qint64 {
                                       if (++calls == 2)
                                           throw std::runtime_error("level failed");
                                       return 500;
                                   }),
                 std::runtime_error);
    EXPECT_EQ(calls, 2) << "a failing level ends the choice";
}

// Megabytes of 1,000,000 bytes, rounded down to whole bytes; nothing below zero.
TEST(PdfCompressionChoice, TargetsInBytes)
{
    const struct {
        double megabytes;
        qint64 bytes;
    } targets[] = {{2.0, 2'000'000}, {2.3, 2'300'000}, {0.0000019, 1}, {0, 0}, {-1, 0}, {std::nan(""), 0}};
    for (const auto& target : targets)
        EXPECT_EQ(pdfTargetBytes(target.megabytes), target.bytes) << target.megabytes;
}

// How large a picture is drawn, and the pixels it keeps at 150 per inch. (The plain placements,
// the levels' resolutions and forms are drawn for real in PdfCompressTest.)
TEST(PdfCompressionChoice, PicturesKeepThePixelsOfTheirLargestPlacement)
{
    const double turn = std::numbers::pi / 6;
    const PdfMatrix placedAt{144, 0, 0, 108, 72, 400};  // 2 × 1.5 inches
    const struct {
        const char* what;
        PdfMatrix ctm;
        QSize pixels;
        QSize kept;
    } cases[] = {
        {"scaled", placedAt, {1200, 900}, {300, 225}},
        {"flipped", PdfMatrix{-144, 0, 0, -108, 500, 500}, {1200, 900}, {300, 225}},
        {"turned 30 degrees", PdfMatrix{144 * std::cos(turn), 144 * std::sin(turn), -108 * std::sin(turn), 108 * std::cos(turn), 0, 0},
         {1200, 900}, {300, 225}},
        // Turned inside a form that stretches: the turn comes first, so the picture's x side
        // takes the form's shorter side.
        {"turned in a stretching form", PdfMatrix{0, 1, -1, 0, 0, 0} * PdfMatrix{144, 0, 0, 108, 0, 0}, {1200, 900}, {400, 300}},
        {"stretched", PdfMatrix{144, 0, 0, 216, 0, 0}, {1200, 900}, {600, 450}},  // the height needs more
        {"already small", placedAt, {200, 150}, {200, 150}},
        {"drawn huge", PdfMatrix{2000, 0, 0, 1000, 0, 0}, {10000, 5000}, {1800, 900}},  // 12 inches at most
        {"a line", PdfMatrix{144, 0, 0, 0.01, 0, 0}, {1200, 900}, {300, 225}},
        {"nowhere to see", PdfMatrix{0, 0, 0, 0, 0, 0}, {1200, 900}, {1, 1}},
    };
    for (const auto& testCase : cases)
        EXPECT_EQ(downsampledSize(testCase.pixels, placedSize(testCase.ctm), 150), testCase.kept)
            << testCase.what;

    EXPECT_EQ(largerPlacement({100, 20}, {50, 40}), QSizeF(100, 40));
}

}  // namespace
