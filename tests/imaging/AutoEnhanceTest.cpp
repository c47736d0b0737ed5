#include "imaging/AutoEnhance.h"

#include "TestPictures.h"
#include "operations/OperationError.h"

#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <cmath>
#include <numbers>

using namespace wendrel;
using namespace wendrel::test;
using vips::VImage;

namespace {

VImage asSrgb(const VImage& image)
{
    return image.cast(VIPS_FORMAT_UCHAR).copy(VImage::option()->set("interpretation", VIPS_INTERPRETATION_sRGB));
}

// photoLike with every channel stretched over nearly the whole range: a well-exposed picture.
VImage wellExposed()
{
    const VImage raw = photoLike(320, 240);
    std::vector<double> gains, offsets;
    for (int band = 0; band < 3; ++band) {
        const double low = raw[band].min();
        const double high = raw[band].max();
        gains.push_back(251.0 / (high - low));
        offsets.push_back(2 - low * 251.0 / (high - low));
    }
    return asSrgb(raw.linear(gains, offsets));
}

// Each channel through out = 255 * (in / 255)^exponent: above 1 a darker key, below 1 a brighter.
VImage toned(const VImage& image, double exponent) { return asSrgb((image / 255.0).pow(exponent) * 255.0); }

// A stormy sky: slate blue, dark at the top and lighter toward the horizon, with a little
// texture. Its channels span different ranges, which a per-channel stretch turns teal.
VImage stormySky()
{
    const VImage xy = VImage::xyz(320, 240);
    const VImage down = xy[1] / 240.0;
    const VImage ripple = (xy[0] * 0.7).sin() * 3.0;
    return asSrgb(VImage::bandjoin({down * 70.0 + 40.0 + ripple, down * 75.0 + 58.0 + ripple, down * 60.0 + 95.0}));
}

// A scene of greys as a badly balanced camera sees it: everything leans blue.
VImage greyWithCast()
{
    const VImage grey = wellExposed().colourspace(VIPS_INTERPRETATION_B_W);
    const VImage rgb = VImage::bandjoin({grey, grey, grey});
    return asSrgb(rgb * std::vector<double>{0.9, 0.96, 1.0} + std::vector<double>{0, 4, 20});
}

struct Measures {
    double meanLightness;  // L*, 0 to 100
    double lightnessSpread;
    double a, b;           // mean a* and b*: the picture's overall colour
    double clipped;        // fraction of pixels with a channel at 0 or 255

    double hue() const { return std::atan2(b, a) * 180 / std::numbers::pi; }
    double cast() const { return std::hypot(a, b); }
};

Measures measured(const VImage& picture)
{
    const VImage lab = picture.colourspace(VIPS_INTERPRETATION_LAB);
    const VImage clipped = ((picture == 0.0) | (picture == 255.0)).bandor();
    return {lab[0].avg(), lab[0].deviate(), lab[1].avg(), lab[2].avg(), clipped.avg() / 255};
}

double hueDifference(double from, double to) { return std::abs(std::fmod(to - from + 540.0, 360.0) - 180.0); }

// Bounds one picture's enhancement must keep; a zero leaves that check out.
struct EnhanceCase {
    const char* name;
    VImage picture;
    double largestLightnessChange;  // L* units, either way
    double largestHueShift = 0;     // degrees, of the picture's overall colour
    double largestCastLeft = 0;     // share of the overall colour's chroma still there
    double smallestSpreadGain = 0;  // factor on the spread of L*
    double largestPixelChange = 0;  // mean absolute change of the channels, 0 to 255
};

TEST(AutoEnhanceTest, ChangesStayWithinThePicturesIntent)
{
    const VImage good = wellExposed();
    const EnhanceCase cases[] = {
        {.name = "well exposed", .picture = good, .largestLightnessChange = 1, .largestHueShift = 2,
         .largestPixelChange = 2},
        {.name = "low key", .picture = toned(good, 2.4), .largestLightnessChange = 3.5, .largestHueShift = 3},
        {.name = "high key", .picture = toned(good, 0.35), .largestLightnessChange = 3.5, .largestHueShift = 3},
        {.name = "stormy sky", .picture = stormySky(), .largestLightnessChange = 8.5, .largestHueShift = 3},
        {.name = "grey with a cast", .picture = greyWithCast(), .largestLightnessChange = 8.5, .largestCastLeft = 0.4},
        {.name = "flat", .picture = asSrgb(good * 0.45 + 70), .largestLightnessChange = 8.5, .largestHueShift = 3,
         .smallestSpreadGain = 1.4},
    };
    for (const EnhanceCase& test : cases) {
        SCOPED_TRACE(test.name);
        const VImage result = autoEnhanced(test.picture, QStringLiteral("picture.png"));
        ASSERT_EQ(result.bands(), 3);
        ASSERT_EQ(result.format(), VIPS_FORMAT_UCHAR);
        const Measures before = measured(test.picture);
        const Measures after = measured(result);
        EXPECT_LE(std::abs(after.meanLightness - before.meanLightness), test.largestLightnessChange);
        EXPECT_LE(after.clipped - before.clipped, 0.01);
        if (test.largestHueShift > 0) {
            EXPECT_LE(hueDifference(before.hue(), after.hue()), test.largestHueShift);
        }
        if (test.largestCastLeft > 0) {
            EXPECT_LE(after.cast(), before.cast() * test.largestCastLeft);
        }
        if (test.smallestSpreadGain > 0) {
            EXPECT_GE(after.lightnessSpread, before.lightnessSpread * test.smallestSpreadGain);
        }
        if (test.largestPixelChange > 0) {
            EXPECT_LE((result - test.picture).abs().avg(), test.largestPixelChange);
        }
    }
}

TEST(AutoEnhanceTest, KeepsAlphaGreyAndSixteenBitPictures)
{
    const VImage dark = toned(wellExposed(), 2.4);
    const VImage alpha = VImage::black(320, 240) + 128;
    const VImage withAlpha = autoEnhanced(dark.bandjoin(alpha.cast(VIPS_FORMAT_UCHAR)), QStringLiteral("a.png"));
    EXPECT_EQ(withAlpha.bands(), 4);
    EXPECT_EQ(withAlpha[3].min(), 128);
    EXPECT_EQ(withAlpha[3].max(), 128);

    const VImage grey = autoEnhanced(dark.colourspace(VIPS_INTERPRETATION_B_W), QStringLiteral("g.png"));
    EXPECT_EQ(grey.bands(), 1);
    const VImage wide = autoEnhanced(dark.colourspace(VIPS_INTERPRETATION_RGB16), QStringLiteral("w.png"));
    EXPECT_EQ(wide.format(), VIPS_FORMAT_USHORT);
    EXPECT_GT(wide.max(), 255);
}

TEST(AutoEnhanceTest, LibraryFailureNamesTheFile)
{
    QTemporaryDir folder;
    const QString path = folder.filePath(QStringLiteral("Broken photo.jpg"));
    save(wellExposed(), path);
    QFile file(path);
    ASSERT_TRUE(file.resize(file.size() / 2));
    // Opened lazily and told to fail on damage, the picture's pixels fail to decode only once
    // Auto Enhance reads them.
    const VImage broken = VImage::new_from_file(QFile::encodeName(path).constData(), VImage::option()->set("fail", true));
    try {
        autoEnhanced(broken, path);
        ADD_FAILURE() << "a damaged picture was enhanced";
    } catch (const OperationError& error) {
        EXPECT_EQ(error.message(), u"Couldn't enhance “Broken photo.jpg”");
    }
}

}  // namespace
