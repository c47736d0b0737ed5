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

// Levels: the darkest and brightest 0.5 % of each channel are clipped to black and white.
constexpr double clipPercent = 0.5;
// How far the per-channel stretch goes compared to a plain stretch of all channels together:
// enough to take out a cast, not so much that a scene lit by a sunset turns grey.
constexpr double colourBalanceStrength = 0.75;
// No channel is stretched by more than this: a flat, foggy picture gets clearer, not harsh.
constexpr double largestGain = 2.2;
// Midtones: a median brightness inside this band is left alone; outside it moves this far
// toward the band, within the gamma limits. Bright beaches and dim interiors stay themselves.
constexpr double darkestNaturalMedian = 0.36;
constexpr double brightestNaturalMedian = 0.6;
constexpr double exposureStrength = 0.6;
constexpr double smallestGamma = 0.65;
constexpr double largestGamma = 1.5;
// Colour: pictures whose average chroma is below this get a lift of at most a fifth.
constexpr double dullChroma = 22;
constexpr double largestSaturation = 1.2;

VImage colourBands(const VImage& picture)
{
    const int bands = picture.has_alpha() ? picture.bands() - 1 : picture.bands();
    return picture.extract_band(0, VImage::option()->set("n", bands));
}

// Measuring a reduced copy gives the same percentiles at a fraction of the cost.
VImage measuringCopy(const VImage& picture)
{
    const VImage colour = colourBands(picture);
    const double scale = std::min(1.0, 512.0 / std::max(colour.width(), colour.height()));
    return scale < 1 ? colour.resize(scale) : colour;
}

int percentile(const VImage& band, double percent) { return band.percent(percent); }

}  // namespace

EnhancePlan planEnhancement(const VImage& picture)
{
    EnhancePlan plan;
    const VImage sample = measuringCopy(picture).cast(VIPS_FORMAT_UCHAR);
    const int channels = std::min(3, sample.bands());

    int low[3] = {0, 0, 0};
    int high[3] = {255, 255, 255};
    for (int channel = 0; channel < channels; ++channel) {
        low[channel] = percentile(sample[channel], clipPercent);
        high[channel] = percentile(sample[channel], 100 - clipPercent);
    }
    const int commonLow = *std::min_element(low, low + channels);
    const int commonHigh = *std::max_element(high, high + channels);

    for (int channel = 0; channel < channels; ++channel) {
        const double black = commonLow + colourBalanceStrength * (low[channel] - commonLow);
        const double white = commonHigh + colourBalanceStrength * (high[channel] - commonHigh);
        const double range = std::max(1.0, white - black);
        plan.black[channel] = black;
        plan.gain[channel] = std::min(largestGain, 255.0 / range);
    }
    for (int channel = channels; channel < 3; ++channel) {
        plan.black[channel] = plan.black[0];
        plan.gain[channel] = plan.gain[0];
    }

    // Midtones, measured after the levels so the two corrections don't fight.
    std::vector<double> gains, offsets;
    for (int channel = 0; channel < channels; ++channel) {
        gains.push_back(plan.gain[channel]);
        offsets.push_back(-plan.black[channel] * plan.gain[channel]);
    }
    const VImage levelled = sample.linear(gains, offsets).cast(VIPS_FORMAT_UCHAR);
    const VImage brightness = channels == 3 ? levelled.colourspace(VIPS_INTERPRETATION_B_W) : levelled;
    const double median = std::clamp(percentile(brightness, 50) / 255.0, 0.02, 0.98);
    const double natural = std::clamp(median, darkestNaturalMedian, brightestNaturalMedian);
    const double wanted = median + exposureStrength * (natural - median);
    plan.gamma = std::clamp(std::log(wanted) / std::log(median), smallestGamma, largestGamma);

    if (channels == 3) {
        const double chroma = levelled.colourspace(VIPS_INTERPRETATION_LCH)[1].avg();
        if (chroma < dullChroma)
            plan.saturation = std::min(largestSaturation, 1 + 0.5 * (dullChroma - chroma) / dullChroma);
    }
    return plan;
}

VImage applyEnhancement(const VImage& picture, const EnhancePlan& plan)
{
    const VImage colour = colourBands(picture);
    const int channels = std::min(3, colour.bands());
    std::vector<double> gains, offsets;
    for (int channel = 0; channel < channels; ++channel) {
        gains.push_back(plan.gain[channel] / 255.0);
        offsets.push_back(-plan.black[channel] * plan.gain[channel] / 255.0);
    }
    // Levels into 0..1, midtones by gamma, back to 0..255.
    VImage result = colour.linear(gains, offsets);
    result = (result > 0.0).ifthenelse(result, 0.0);
    result = (result < 1.0).ifthenelse(result, 1.0);
    result = result.pow(plan.gamma) * 255.0;
    result = result.cast(VIPS_FORMAT_UCHAR)
                 .copy(VImage::option()->set("interpretation",
                                             channels == 3 ? VIPS_INTERPRETATION_sRGB : VIPS_INTERPRETATION_B_W));
    if (channels == 3 && std::abs(plan.saturation - 1) > 1e-3) {
        const VImage lch = result.colourspace(VIPS_INTERPRETATION_LCH);
        result = lch.linear({1.0, plan.saturation, 1.0}, {0.0, 0.0, 0.0})
                     .copy(VImage::option()->set("interpretation", VIPS_INTERPRETATION_LCH))
                     .colourspace(VIPS_INTERPRETATION_sRGB)
                     .cast(VIPS_FORMAT_UCHAR);
    }
    if (picture.has_alpha())
        result = result.bandjoin(picture[picture.bands() - 1]);
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
