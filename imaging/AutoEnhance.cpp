#include "AutoEnhance.h"

#include "ImageEntries.h"
#include "operations/FileNames.h"
#include "operations/Logging.h"
#include "operations/OperationError.h"

#include <algorithm>
#include <cmath>

namespace wendrel {

namespace {

using vips::VImage;

// Key: a median L* below the first is a low-key picture, above the second a high-key one.
// Deep blue skies and evening scenes sit near the low bound, so it is not set higher.
constexpr double lowKeyMedian = 38;
constexpr double highKeyMedian = 68;
// How far the mean L* may move, by key: a night scene stays a night scene.
constexpr double largestLightnessChange[] = {/* low */ 3, /* normal */ 8, /* high */ 3};
// Levels: the darkest and brightest 0.2 % go to black and white, with at most this much
// stretch: a flat, foggy picture gets clearer, not harsh. Points within the dead band of the
// ends are left there, so a picture that uses the full range is not touched.
constexpr double clipPercent = 0.2;
constexpr double largestStretch = 1.6;
constexpr double levelsDeadBand = 8;
// Midtones: a median outside the natural band moves this far toward it, within the gamma
// limits; inside the band the median stays where the photographer put it.
constexpr double darkestNaturalMedian = 38;
constexpr double brightestNaturalMedian = 65;
constexpr double exposureStrength = 0.6;
constexpr double smallestGamma = 0.6;
constexpr double largestGamma = 1.6;
// Cast: the least lean of the picture's black and white that counts, and how closely the two
// must agree in direction (cosine). The correction takes out part of it, bounded, from the
// near-neutral colours, fading out with chroma, so coloured areas keep their hue.
constexpr double leastCast = 5;
constexpr double sameDirection = 0.77;
constexpr double castStrength = 0.7;
constexpr double largestCastCorrection = 10;
constexpr double neutralChroma = 20;
constexpr double untouchedChroma = 40;
constexpr double leastNeutralShare = 0.15;
// Colour: pictures whose mean chroma is below this get a lift of at most 15 %.
constexpr double dullChroma = 12;
constexpr double largestChromaLift = 0.15;
// Brightening eases each pixel's brightest channel toward this linear value (253 of 255).
constexpr double liftCeiling = 0.985;

// The colour bands with the interpretation their bands and sample format say they have, so
// conversions to and from CIELAB know what they start from. Formats other than 8 and 16 bits
// per sample are brought to 8 bits, which is what the result is written with.
VImage colourBands(const VImage& picture)
{
    const int bands = picture.has_alpha() ? picture.bands() - 1 : picture.bands();
    VImage colour = picture.extract_band(0, VImage::option()->set("n", bands >= 3 ? 3 : 1));
    if (colour.format() != VIPS_FORMAT_UCHAR && colour.format() != VIPS_FORMAT_USHORT)
        colour = colour.cast(VIPS_FORMAT_UCHAR);
    const bool wide = colour.format() == VIPS_FORMAT_USHORT;
    const VipsInterpretation space = colour.bands() == 3 ? (wide ? VIPS_INTERPRETATION_RGB16 : VIPS_INTERPRETATION_sRGB)
                                                         : (wide ? VIPS_INTERPRETATION_GREY16 : VIPS_INTERPRETATION_B_W);
    return colour.copy(VImage::option()->set("interpretation", space));
}

// Measuring a reduced copy gives the same percentiles and means at a fraction of the cost.
VImage reducedCopy(const VImage& colour)
{
    const double scale = std::min(1.0, 512.0 / std::max(colour.width(), colour.height()));
    return (scale < 1 ? colour.resize(scale) : colour).copy_memory();
}

// The value below which `percent` of an 8 or 16-bit band lies. libvips' own percent() answers
// one past the largest value for high percentiles when that value alone holds more than the
// rest, so the histogram is walked here.
int percentile(const VImage& band, double percent)
{
    const VImage histogram = band.hist_find().cast(VIPS_FORMAT_DOUBLE);
    size_t size = 0;
    auto* counts = static_cast<double*>(histogram.write_to_memory(&size));
    const size_t bins = size / sizeof(double);
    const double wanted = percent / 100 * band.width() * band.height();
    double count = 0;
    size_t bin = 0;
    while (bin + 1 < bins && (count += counts[bin]) < wanted)
        ++bin;
    g_free(counts);
    return int(bin);
}

// A percentile of L*, from a histogram at a hundredth of a unit.
double lightnessPercentile(const VImage& lightness, double percent)
{
    return percentile((lightness * 100.0).cast(VIPS_FORMAT_USHORT), percent) / 100.0;
}

VImage clamped(const VImage& image, double low, double high)
{
    const VImage above = (image > low).ifthenelse(image, low);
    return (above < high).ifthenelse(above, high);
}

// L* through the plan's curve, at full strength.
VImage toneCurve(const VImage& lightness, const EnhancePlan& plan)
{
    const VImage levelled = clamped((lightness - plan.black) / (plan.white - plan.black), 0, 1);
    return levelled.pow(plan.gamma) * 100.0;
}

// The relative luminance Y (0 to 1) of a CIE L*.
VImage luminanceOf(const VImage& lightness)
{
    return (lightness > 8.0).ifthenelse(((lightness + 16.0) / 116.0).pow(3), lightness / 903.3);
}

PictureKey keyOf(double median)
{
    if (median < lowKeyMedian)
        return PictureKey::low;
    if (median > highKeyMedian)
        return PictureKey::high;
    return PictureKey::normal;
}

void planTones(const VImage& lightness, EnhancePlan& plan)
{
    const double median = lightnessPercentile(lightness, 50);
    plan.key = keyOf(median);

    const double darkest = lightnessPercentile(lightness, clipPercent);
    const double brightest = lightnessPercentile(lightness, 100 - clipPercent);
    plan.black = darkest > levelsDeadBand ? darkest : 0;
    plan.white = brightest < 100 - levelsDeadBand ? brightest : 100;
    // Too short a range is stretched only as far as allowed, from its middle outwards.
    const double range = std::max(plan.white - plan.black, 1.0);
    if (100 / range > largestStretch) {
        const double middle = (plan.white + plan.black) / 2;
        const double allowed = 100 / largestStretch;
        plan.black = std::clamp(middle - allowed / 2, 0.0, 100 - allowed);
        plan.white = plan.black + allowed;
    }

    const double levelledMedian = std::clamp((median - plan.black) / (plan.white - plan.black), 0.02, 0.98);
    const double natural = std::clamp(median, darkestNaturalMedian, brightestNaturalMedian);
    const double wanted = (median + exposureStrength * (natural - median)) / 100;
    plan.gamma = std::clamp(std::log(wanted) / std::log(levelledMedian), smallestGamma, largestGamma);

    // The curve's effect on the mean is linear in its strength, so the bound is met exactly.
    const double change = toneCurve(lightness, plan).avg() - lightness.avg();
    const double bound = largestLightnessChange[int(plan.key)];
    plan.strength = std::abs(change) > bound ? bound / std::abs(change) : 1;
}

// The CIELAB colour of one sRGB or RGB16 value.
std::vector<double> labOf(const std::vector<double>& value, const VImage& like)
{
    return (VImage::black(1, 1, VImage::option()->set("bands", 3)) + value)
        .cast(like.format())
        .copy(VImage::option()->set("interpretation", like.interpretation()))
        .colourspace(VIPS_INTERPRETATION_LAB)
        .getpoint(0, 0);
}

// The a*b* of the picture's black and of its white, each channel taken at its own extreme.
struct Ends {
    double blackA, blackB, whiteA, whiteB;
};

Ends endsOf(const VImage& colour)
{
    std::vector<double> darkest, brightest;
    for (int band = 0; band < 3; ++band) {
        darkest.push_back(percentile(colour[band], clipPercent));
        brightest.push_back(percentile(colour[band], 100 - clipPercent));
    }
    const std::vector<double> black = labOf(darkest, colour);
    const std::vector<double> white = labOf(brightest, colour);
    return {black[1], black[2], white[1], white[2]};
}

// A cast tints the whole tonal range: the picture's black and its white both lean, the same
// way. A scene's own colour rarely does that: a blue dusk has neutral or warm lights, a
// field of grass a green shadow but a pale sky. Low-key and high-key pictures keep the colour
// of their light, which is part of their mood, and their ends are too bunched to judge. And a
// cast is only seen where there are things that ought to be grey: in a picture colourful all
// over (autumn leaves, a flower bed) the colours are the scene's.
void planColour(const VImage& sample, const VImage& lab, EnhancePlan& plan)
{
    const VImage chroma = (lab[1] * lab[1] + lab[2] * lab[2]).pow(0.5);
    const VImage lightness = lab[0];
    const double neutralShare = ((chroma < neutralChroma) & (lightness > 25.0) & (lightness < 95.0)).avg() / 255;
    if (plan.key == PictureKey::normal && neutralShare >= leastNeutralShare) {
        const Ends ends = endsOf(sample);
        const double black = std::hypot(ends.blackA, ends.blackB);
        const double white = std::hypot(ends.whiteA, ends.whiteB);
        const double agreement = (ends.blackA * ends.whiteA + ends.blackB * ends.whiteB) / std::max(black * white, 1e-6);
        if (std::min(black, white) >= leastCast && agreement >= sameDirection) {
            const double a = ends.blackA / black + ends.whiteA / white;
            const double b = ends.blackB / black + ends.whiteB / white;
            const double correction = std::min(castStrength * std::min(black, white), largestCastCorrection);
            plan.castA = a / std::hypot(a, b) * correction;
            plan.castB = b / std::hypot(a, b) * correction;
        }
    }

    const double meanChroma = chroma.avg();
    if (plan.key == PictureKey::normal && meanChroma < dullChroma)
        plan.chroma = 1 + largestChromaLift * (dullChroma - meanChroma) / dullChroma;
}

}  // namespace

bool EnhancePlan::changesNothing() const
{
    const bool tones = strength < 1e-3 || (black == 0 && white == 100 && std::abs(gamma - 1) < 1e-3);
    return tones && std::hypot(castA, castB) < 0.5 && std::abs(chroma - 1) < 1e-3;
}

EnhancePlan planEnhancement(const VImage& picture)
{
    EnhancePlan plan;
    const VImage sample = reducedCopy(colourBands(picture));
    const VImage lab = sample.colourspace(VIPS_INTERPRETATION_LAB).copy_memory();
    planTones(lab[0], plan);
    if (sample.bands() == 3)
        planColour(sample, lab, plan);
    return plan;
}

VImage applyEnhancement(const VImage& picture, const EnhancePlan& plan)
{
    if (plan.changesNothing())
        return picture.copy_memory();
    const VImage colour = colourBands(picture);
    const VImage lab = colour.colourspace(VIPS_INTERPRETATION_LAB);

    // Colour first, on a* and b* with L* kept: the cast leaves the near-neutral colours, and dull
    // colour is lifted by scaling a* and b* together, which keeps every hue.
    VImage linear = colour.colourspace(VIPS_INTERPRETATION_scRGB);
    if (std::hypot(plan.castA, plan.castB) >= 0.5 || plan.chroma != 1) {
        const VImage chroma = (lab[1] * lab[1] + lab[2] * lab[2]).pow(0.5);
        const VImage castShare = clamped((untouchedChroma - chroma) / (untouchedChroma - neutralChroma), 0, 1);
        const VImage a = (lab[1] - castShare * plan.castA) * plan.chroma;
        const VImage b = (lab[2] - castShare * plan.castB) * plan.chroma;
        linear = VImage::bandjoin({lab[0], a, b})
                     .copy(VImage::option()->set("interpretation", VIPS_INTERPRETATION_LAB))
                     .colourspace(VIPS_INTERPRETATION_scRGB);
    }

    // Tones: the curve decides each pixel's new L*, and the pixel's linear light is scaled by
    // the matching ratio of luminance, so its chromaticity stays. Where that would lift the
    // brightest channel, the lift is eased so that channel approaches full scale without
    // reaching it: highlights get brighter but no colour is pushed into clipping. The ceiling
    // sits just under full scale, since values above it round to 255 in 8 bits.
    const VImage lightness = lab[0];
    const VImage toned = lightness + (toneCurve(lightness, plan) - lightness) * plan.strength;
    const VImage ratio = luminanceOf(toned) / (luminanceOf(lightness) + 1e-6);
    VImage brightest = linear[0];
    for (int band = 1; band < linear.bands(); ++band)
        brightest = (linear[band] > brightest).ifthenelse(linear[band], brightest);
    const VImage room = clamped(liftCeiling - brightest, 1e-6, 1);
    const VImage lift = clamped(brightest * (ratio - 1.0), 0, 1e6);
    const VImage easedTop = brightest + room * (1.0 - (lift / room * -1.0).exp());
    const VImage safeRatio = (ratio > 1.0).ifthenelse(easedTop / (brightest + 1e-6), ratio);

    VImage result = (linear * safeRatio)
                        .copy(VImage::option()->set("interpretation", VIPS_INTERPRETATION_scRGB))
                        .colourspace(colour.interpretation())
                        .cast(colour.format());
    if (picture.has_alpha())
        result = result.bandjoin(picture[picture.bands() - 1].cast(colour.format()));
    return result.copy_memory();
}

VImage autoEnhanced(const VImage& picture, const QString& path)
{
    try {
        return applyEnhancement(picture, planEnhancement(picture));
    } catch (const vips::VError& error) {
        qCInfo(lcJobs, "Auto Enhance failed on %s: %s", qUtf8Printable(path), error.what());
        throw OperationError(imagingText("Couldn't enhance “%1”").arg(lastPathComponent(path)));
    }
}

}  // namespace wendrel
