#include "imaging/compress/CompressionSearch.h"

#include <gtest/gtest.h>

#include <cmath>

using namespace wendrel;

namespace {

// A stand-in encoder whose output size grows with quality and with the picture's area, the
// way real encoders behave; it records every quality it was asked for.
struct ModelPicture {
    explicit ModelPicture(double bytesAtFullQuality) : fullSizeBytes(bytesAtFullQuality) {}

    double fullSizeBytes;  // at quality 1 and full scale
    double scale = 1;
    std::vector<double> asked;
    bool failing = false;

    SearchablePicture searchable()
    {
        return {[this](double quality) -> std::optional<QByteArray> {
                    asked.push_back(quality);
                    if (failing)
                        return std::nullopt;
                    const double bytes = fullSizeBytes * scale * scale * (0.1 + 0.9 * quality * quality);
                    return QByteArray(qsizetype(bytes), 'x');
                },
                [this] { scale *= 0.75; }};
    }
};

CompressionSettings settings(CompressionSettings::Mode mode, double targetMB, double reducePercent)
{
    CompressionSettings result;
    result.mode = mode;
    result.targetMB = targetMB;
    result.reducePercent = reducePercent;
    return result;
}

}  // namespace

TEST(CompressionTarget, SizeModesAimAtLeastTenThousandBytes)
{
    using Mode = CompressionSettings::Mode;
    EXPECT_EQ(compressionTarget(settings(Mode::targetSize, 0.001, 50), 5'000'000), 10'000);
    EXPECT_EQ(compressionTarget(settings(Mode::targetSize, 1.5, 50), 5'000'000), 1'500'000);
    EXPECT_EQ(compressionTarget(settings(Mode::reduceBy, 1, 50), 3'000'000), 1'500'000);
    EXPECT_EQ(compressionTarget(settings(Mode::reduceBy, 1, 0), 3'000'000), 2'970'000);
    EXPECT_EQ(compressionTarget(settings(Mode::reduceBy, 1, 150), 3'000'000), 30'000);
    EXPECT_EQ(compressionTarget(settings(Mode::reduceBy, 1, 99.5), 3'000'000), 30'000);
    EXPECT_EQ(compressionTarget(settings(Mode::targetSize, -4, 50), 5'000'000), 10'000);
    EXPECT_EQ(compressionTarget(settings(Mode::quality, 1, 50), 5'000'000), std::nullopt);
}

TEST(CompressionTarget, QualityModeClampsItsPercentage)
{
    EXPECT_DOUBLE_EQ(qualityModeQuality(0.5), 0.01);
    EXPECT_DOUBLE_EQ(qualityModeQuality(1), 0.01);
    EXPECT_DOUBLE_EQ(qualityModeQuality(75), 0.75);
    EXPECT_DOUBLE_EQ(qualityModeQuality(250), 1.0);
}

TEST(SizeSearch, PictureThatFitsEasilyIsSearchedUpToTheTop)
{
    ModelPicture picture(1000);
    SearchablePicture searchable = picture.searchable();
    const std::optional<CompressionResult> result = searchForSize(searchable, 1'000'000);
    ASSERT_TRUE(result);
    EXPECT_DOUBLE_EQ(picture.asked.front(), 0.5);
    EXPECT_EQ(result->encodes, 7);
    EXPECT_EQ(result->shrinks, 0);
    EXPECT_NEAR(result->quality, 0.943, 0.001);
}

TEST(SizeSearch, FindsTheHighestQualityThatFitsToTheSearchsResolution)
{
    ModelPicture picture(1'000'000);
    SearchablePicture searchable = picture.searchable();
    const std::optional<CompressionResult> result = searchForSize(searchable, 400'000);
    ASSERT_TRUE(result);
    EXPECT_LE(result->bytes.size(), 400'000);
    // The model fits up to q = sqrt(0.3 / 0.9) = 0.577; seven halvings land within 0.9 / 2^7.
    EXPECT_LE(result->quality, std::sqrt(0.3 / 0.9));
    EXPECT_GT(result->quality, std::sqrt(0.3 / 0.9) - 0.9 / 128);
    EXPECT_EQ(result->shrinks, 0);
    for (double quality : picture.asked) {
        EXPECT_GE(quality, 0.05);
        EXPECT_LE(quality, 0.95);
    }
}

TEST(SizeSearch, ShrinksByThreeQuartersWhenNoQualityFits)
{
    // Nothing the search tries fits at full size or at three quarters; at 0.5625 it does.
    ModelPicture picture(1'000'000);
    SearchablePicture searchable = picture.searchable();
    const std::optional<CompressionResult> result = searchForSize(searchable, 40'000);
    ASSERT_TRUE(result);
    EXPECT_EQ(result->shrinks, 2);
    EXPECT_EQ(result->encodes, 21);
    EXPECT_LE(result->bytes.size(), 40'000);
    EXPECT_DOUBLE_EQ(picture.scale, 0.5625);
}

TEST(SizeSearch, HopelessTargetEndsWithTheEighthShrinkAtLowestQuality)
{
    ModelPicture picture(1e8);
    SearchablePicture searchable = picture.searchable();
    const std::optional<CompressionResult> result = searchForSize(searchable, 10'000);
    ASSERT_TRUE(result);
    EXPECT_EQ(result->encodes, 57);
    EXPECT_EQ(result->shrinks, 8);
    EXPECT_DOUBLE_EQ(result->quality, 0.05);
    EXPECT_NEAR(picture.scale, std::pow(0.75, 8), 1e-12);
    EXPECT_GT(result->bytes.size(), 10'000);  // larger than asked: the best that can be done
}

TEST(SizeSearch, FailingEncoderEndsEachSearchAndFinallyTheWhole)
{
    ModelPicture picture(1000);
    picture.failing = true;
    SearchablePicture searchable = picture.searchable();
    EXPECT_EQ(searchForSize(searchable, 1'000'000), std::nullopt);
    EXPECT_EQ(picture.asked.size(), 9u);  // one try per search, then the final encode
}
