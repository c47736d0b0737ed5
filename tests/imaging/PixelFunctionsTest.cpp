#include "imaging/BackgroundCard.h"
#include "imaging/PixelFunctions.h"

#include "TestPictures.h"

#include <gtest/gtest.h>

#include <tuple>

using namespace wendrel;
using namespace wendrel::test;
using vips::VImage;

// Fitting leaves small pictures and shrinks large ones in proportion, rounding 0.5 away from
// zero; halving divides as integers; neither ever reaches zero pixels.
TEST(PixelFunctions, FittedAndHalvedSizes)
{
    const struct {
        QSize size;
        int longest;  // 0: halved
        QSize expected;
    } rows[] = {
        {{1000, 500}, 1920, {1000, 500}}, {{1920, 1080}, 1920, {1920, 1080}}, {{3840, 2160}, 1920, {1920, 1080}},
        {{2160, 3840}, 1920, {1080, 1920}}, {{3000, 1001}, 1500, {1500, 501}}, {{100000, 1}, 1920, {1920, 1}},
        {{4001, 3001}, 0, {2000, 1500}},   {{1, 1}, 0, {1, 1}},               {{2, 100}, 0, {1, 50}},
    };
    for (const auto& row : rows)
        EXPECT_EQ(row.longest ? fittedSize(row.size, row.longest) : halfSize(row.size), row.expected)
            << row.size.width() << "x" << row.size.height() << " to " << row.longest;

    const SquareCrop wide = centredSquare({300, 200});
    EXPECT_EQ(std::tuple(wide.side, wide.left, wide.top), std::tuple(200, 50, 0));
    EXPECT_EQ(centredSquare({200, 301}).top, 50);
    EXPECT_EQ(centredSquare({64, 64}).left, 0);
}

TEST(PixelFunctions, ResizeHitsTheExactSizeWithoutDarkFringes)
{
    const VImage disc = transparentDisc(90);
    const VImage resized = resizedTo(disc, {37, 23});
    EXPECT_EQ(resized.width(), 37);
    EXPECT_EQ(resized.height(), 23);
    EXPECT_EQ(resized.bands(), 4);
    // At the disc's soft edge the colour stays the disc's green, not darkened by transparency.
    for (int x = 0; x < 37; ++x) {
        const std::vector<double> edge = pixel(resized, x, 11);
        if (edge[3] > 20 && edge[3] < 235) {
            EXPECT_GT(edge[1], 150) << "x " << x;
        }
    }
}

TEST(PixelFunctions, TurnsAndMirrorsMovePixelsTheRightWay)
{
    const VImage picture = twoColours(40, 20);  // red left, blue right
    const VImage right = rotatedRight(picture);
    EXPECT_EQ(right.width(), 20);
    EXPECT_EQ(right.height(), 40);
    EXPECT_GT(pixel(right, 10, 5)[0], 180);  // clockwise: left side comes to the top
    const VImage left = rotatedLeft(picture);
    EXPECT_GT(pixel(left, 10, 35)[0], 180);  // counter-clockwise: left side goes to the bottom
    const VImage flipped = mirrored(picture);
    EXPECT_GT(pixel(flipped, 35, 10)[0], 180);
    const VImage square = croppedSquare(picture);
    EXPECT_EQ(square.width(), 20);
    EXPECT_EQ(square.height(), 20);
}

TEST(PixelFunctions, BlackAndWhiteIsGreyWithWhiteWhereItWasClear)
{
    const VImage grey = blackAndWhite(transparentDisc(30));
    EXPECT_EQ(grey.bands(), 1);
    EXPECT_EQ(pixel(grey, 0, 0)[0], 255);
    EXPECT_LT(pixel(grey, 15, 15)[0], 200);
}

TEST(BackgroundCard, LayoutFollowsThePictureSize)
{
    const CardLayout small = cardLayout({100, 60});
    EXPECT_EQ(small.pad, 48);
    EXPECT_EQ(small.canvas, QSize(196, 156));
    EXPECT_DOUBLE_EQ(small.radius, 7.2);
    const CardLayout large = cardLayout({2000, 1000});
    EXPECT_EQ(large.pad, 160);
    EXPECT_EQ(large.canvas, QSize(2320, 1320));
}

TEST(BackgroundCard, PictureSitsOnACardOverTheGradient)
{
    const VImage picture = twoColours(200, 120);
    const VImage card = onBackgroundCard(picture);
    const CardLayout layout = cardLayout({200, 120});
    ASSERT_EQ(card.width(), layout.canvas.width());
    ASSERT_EQ(card.height(), layout.canvas.height());
    EXPECT_EQ(card.bands(), 3);

    const std::vector<double> bottomLeft = pixel(card, 1, card.height() - 2);
    const std::vector<double> topRight = pixel(card, card.width() - 2, 1);
    EXPECT_GT(bottomLeft[2], 220);            // blue end of the gradient
    EXPECT_LT(bottomLeft[0], 120);
    EXPECT_GT(topRight[0], 200);              // pink end
    EXPECT_GT(topRight[2], 190);
    EXPECT_GT(pixel(card, layout.pad + 20, layout.pad + 60)[0], 180);   // the picture's red half
    EXPECT_GT(pixel(card, layout.pad + 180, layout.pad + 60)[2], 180);  // its blue half
    // The very corner of the picture is cut round: the background shows there.
    const std::vector<double> corner = pixel(card, layout.pad, layout.pad);
    EXPECT_LT(corner[0], 200);
    EXPECT_GT(corner[2], 150);
}
