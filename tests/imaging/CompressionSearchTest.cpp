#include "imaging/compress/CompressionSearch.h"

#include <gtest/gtest.h>

#include <cmath>
#include <functional>

using namespace wendrel;

namespace {

// A stand-in encoder whose output size grows with the encoder's setting (a whole percentage)
// and with the picture's area, the way real encoders behave; it counts the encodes.
struct ModelPicture {
    std::function<double(int setting)> bytesAtFullScale;
    double scale = 1;
    int encodes = 0;
    bool failing = false;

    std::optional<QByteArray> encode(double quality)
    {
        ++encodes;
        if (failing)
            return std::nullopt;
        const double bytes = bytesAtFullScale(int(std::lround(quality * 100))) * scale * scale;
        return QByteArray(qsizetype(bytes), 'x');
    }

    SearchablePicture searchable()
    {
        return {[this](double quality) { return encode(quality); }, [this] { scale *= 0.75; }};
    }
};

// The plain search the fast one must agree with: seven halvings between 0.05 and 0.95 per
// scale, up to eight shrinks, then 0.05 whatever the size.
CompressionResult plainSearch(ModelPicture& picture, qint64 target)
{
    CompressionResult result;
    for (int search = 0; search < 8; ++search) {
        std::optional<QByteArray> best;
        double low = 0.05;
        double high = 0.95;
        for (int attempt = 0; attempt < 7; ++attempt) {
            const double quality = (low + high) / 2;
            std::optional<QByteArray> bytes = picture.encode(quality);
            if (bytes && bytes->size() <= target) {
                best = bytes;
                result.quality = quality;
                low = quality;
            } else {
                high = quality;
            }
        }
        if (best) {
            result.bytes = *best;
            return result;
        }
        picture.scale *= 0.75;
        ++result.shrinks;
    }
    result.bytes = *picture.encode(0.05);
    result.quality = 0.05;
    return result;
}

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

// Whatever the curve and the target, the search returns exactly what the plain binary search
// returns, at the same scale; smooth curves take about half the encodes or fewer, and flat runs
// that mislead every estimate cost at most two encodes more per scale.
TEST(SizeSearch, AgreesWithThePlainBinarySearchInFewerEncodes)
{
    const auto quadratic = [](int s) { return 1e6 * (0.1 + 0.9 * s * s / 1e4); };
    const auto jpegLike = [](int s) { return 2e5 * std::exp(s / 25.0) + (s > 90 ? 4e5 * (s - 90) : 0); };
    const auto stairs = [](int s) { return 3e5 + 1e5 * (s / 10); };  // flat runs between jumps
    const struct {
        const char* curve;
        std::function<double(int)> bytes;
        qint64 target;
        int mostEncodes;  // the plain search needs 7 per scale
    } cases[] = {
        {"quadratic, fits everywhere", quadratic, 2'000'000, 2},
        {"quadratic, boundary mid-way", quadratic, 400'000, 4},
        {"quadratic, boundary low", quadratic, 120'000, 6},
        {"quadratic, two shrinks", quadratic, 40'000, 10},
        {"quadratic, hopeless", [](int s) { return 1e8 * (0.1 + 0.9 * s * s / 1e4); }, 10'000, 17},
        {"JPEG-like, target 500 KB", jpegLike, 500'000, 4},
        {"JPEG-like, target 2 MB", jpegLike, 2'000'000, 4},
        {"JPEG-like, steep top", jpegLike, 9'000'000, 5},
        {"stairs", stairs, 650'000, 5},
        {"stairs, between steps", stairs, 1'049'999, 9},
    };
    for (const auto& example : cases) {
        ModelPicture reference{example.bytes};
        const CompressionResult expected = plainSearch(reference, example.target);
        ModelPicture picture{example.bytes};
        SearchablePicture searchable = picture.searchable();
        const std::optional<CompressionResult> result = searchForSize(searchable, example.target);
        ASSERT_TRUE(result) << example.curve;
        EXPECT_DOUBLE_EQ(result->quality, expected.quality) << example.curve;
        EXPECT_EQ(result->bytes.size(), expected.bytes.size()) << example.curve;
        EXPECT_EQ(result->shrinks, expected.shrinks) << example.curve;
        EXPECT_EQ(result->encodes, picture.encodes) << example.curve;
        EXPECT_LE(result->encodes, reference.encodes + 2) << example.curve;
        EXPECT_LE(result->encodes, example.mostEncodes) << example.curve;
    }
}

TEST(SizeSearch, FailingEncoderEndsEachSearchAndFinallyTheWhole)
{
    ModelPicture picture{[](int) { return 1000.0; }};
    picture.failing = true;
    SearchablePicture searchable = picture.searchable();
    EXPECT_EQ(searchForSize(searchable, 1'000'000), std::nullopt);
    EXPECT_EQ(picture.encodes, 9);  // one try per search, then the final encode
}
