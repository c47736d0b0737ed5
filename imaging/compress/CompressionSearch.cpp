#include "CompressionSearch.h"

#include <algorithm>
#include <cmath>
#include <vector>

namespace wendrel {

namespace {

constexpr qint64 smallestTarget = 10'000;
constexpr int encodesPerSearch = 7;
constexpr int searches = 8;
constexpr double lowestQuality = 0.05;
constexpr double highestQuality = 0.95;

}  // namespace

std::optional<qint64> compressionTarget(const CompressionSettings& settings, qint64 inputBytes)
{
    double target = 0;
    switch (settings.mode) {
    case CompressionSettings::Mode::quality:
        return std::nullopt;
    case CompressionSettings::Mode::targetSize:
        target = settings.targetMB * 1'000'000;
        break;
    case CompressionSettings::Mode::reduceBy: {
        const double factor = settings.reducePercent <= 1 ? 0.99 : 1 - std::min(settings.reducePercent, 99.0) / 100;
        target = factor * double(inputBytes);
        break;
    }
    }
    if (!(target >= 0))  // negative or not a number
        target = 0;
    return std::max(smallestTarget, qint64(std::min(target, 9.0e18)));
}

double qualityModeQuality(double qualityPercent)
{
    if (!(qualityPercent > 1))
        return 0.01;
    return std::min(qualityPercent, 100.0) / 100;
}

namespace {

// The binary search's questions are all of the form "does quality q fit?", and the qualities it
// can ask about lie on a fixed grid: every midpoint it can reach, 0.9 / 128 apart.
constexpr int gridSteps = 1 << encodesPerSearch;

double gridQuality(int step) { return lowestQuality + step * (highestQuality - lowestQuality) / gridSteps; }

// What the encodes made at one scale say about the sizes there.
class SizesAtOneScale {
public:
    SizesAtOneScale(SearchablePicture& picture, qint64 targetBytes) : m_picture(picture), m_target(targetBytes) {}

    // Whether a grid step fits, when the encodes so far tell: sizes never shrink as the
    // setting grows, so a setting at or below one that fitted fits, and one at or above a
    // setting that didn't, doesn't.
    std::optional<bool> knownFit(int step) const
    {
        const int setting = m_picture.setting(gridQuality(step));
        if (m_highestFitting && setting <= *m_highestFitting)
            return true;
        if (m_lowestTooLarge && setting >= *m_lowestTooLarge)
            return false;
        return std::nullopt;
    }

    // Encodes a grid step; false when the encoder failed.
    bool encode(int step, int& encodes)
    {
        const double quality = gridQuality(step);
        std::optional<QByteArray> bytes = m_picture.encode(quality);
        ++encodes;
        if (!bytes)
            return false;
        const int setting = m_picture.setting(quality);
        m_seen.push_back({quality, double(bytes->size())});
        if (bytes->size() <= m_target) {
            if (!m_highestFitting || setting > *m_highestFitting) {
                m_highestFitting = setting;
                m_fittingBytes = std::move(*bytes);
            }
        } else if (!m_lowestTooLarge || setting < *m_lowestTooLarge) {
            m_lowestTooLarge = setting;
        }
        return true;
    }

    // Where the sizes seen so far put the target, as a quality, and on which sides of it there
    // are encodes: log size taken as linear in quality between the nearest encodes either side
    // of the target, or, with encodes on one side only, growing by half a size per tenth of
    // quality, as photos in JPEG roughly do.
    struct Estimate {
        double boundary;
        bool seenBelow;
        bool seenAbove;
    };
    Estimate estimate() const
    {
        const double logTarget = std::log(double(m_target));
        const Sample* below = nullptr;
        const Sample* above = nullptr;
        for (const Sample& sample : m_seen) {
            if (sample.bytes <= double(m_target)) {
                if (!below || sample.quality > below->quality)
                    below = &sample;
            } else if (!above || sample.quality < above->quality) {
                above = &sample;
            }
        }
        constexpr double typicalSlope = 4.0;  // ln(size) per unit of quality
        if (below && above && above->quality > below->quality && above->bytes > below->bytes) {
            const double slope = (std::log(above->bytes) - std::log(below->bytes)) / (above->quality - below->quality);
            return {below->quality + (logTarget - std::log(below->bytes)) / slope, true, true};
        }
        if (below || above) {
            const Sample& nearest = below ? *below : *above;
            return {nearest.quality + (logTarget - std::log(nearest.bytes)) / typicalSlope, below != nullptr, above != nullptr};
        }
        return {gridQuality(gridSteps / 2), false, false};
    }

    // The next encode, aimed at the boundary, among the steps strictly between `low` and `high`
    // whose fit is unknown. With encodes on both sides of the target it is the step on the
    // estimate's side of `step` nearest the estimate, so that, if the estimate is right, it
    // answers the question about `step` and lands next to the boundary. With encodes on one side
    // only, it is the nearest step just across the estimate, to find the other side.
    int probeFor(int step, int low, int high) const
    {
        // One-sided estimates come from a typical slope, not this picture's: aim a little past
        // them, so the encode most likely lands across the boundary and brackets it.
        constexpr double pastOneSidedEstimate = 0.015;
        const Estimate guess = estimate();
        const bool bracketed = guess.seenBelow && guess.seenAbove;
        const bool lookAbove = bracketed ? gridQuality(step) > guess.boundary : guess.seenBelow;
        const double aim = bracketed ? guess.boundary
                                     : guess.boundary + (lookAbove ? pastOneSidedEstimate : -pastOneSidedEstimate);
        std::optional<int> nearest;
        std::optional<int> farthest;  // when nothing lies past the aim, the unknown step closest to it
        for (int candidate = low + 1; candidate < high; ++candidate) {
            if (knownFit(candidate))
                continue;
            const double quality = gridQuality(candidate);
            if (lookAbove ? quality >= aim && (!nearest || candidate < *nearest)
                          : quality <= aim && (!nearest || candidate > *nearest))
                nearest = candidate;
            if (!farthest || (lookAbove ? candidate > *farthest : candidate < *farthest))
                farthest = candidate;
        }
        return nearest.value_or(farthest.value_or(step));
    }

    // The bytes of a grid step known to fit: kept from its encode when it has the highest
    // fitting setting seen (which is where the search ends unless the encoder failed).
    std::optional<QByteArray> fittingBytes(int step, int& encodes) const
    {
        if (m_highestFitting && m_picture.setting(gridQuality(step)) == *m_highestFitting)
            return m_fittingBytes;
        ++encodes;
        return m_picture.encode(gridQuality(step));
    }

private:
    struct Sample {
        double quality;
        double bytes;
    };

    SearchablePicture& m_picture;
    qint64 m_target;
    std::vector<Sample> m_seen;
    std::optional<int> m_highestFitting;
    std::optional<int> m_lowestTooLarge;
    QByteArray m_fittingBytes;
};

// One binary search at the picture's current scale: the highest grid quality that fits, with
// its bytes, or nothing when none fits.
std::optional<std::pair<double, QByteArray>> searchOneScale(SearchablePicture& picture, qint64 targetBytes,
                                                            int& encodes)
{
    // Encodes aimed at the estimate answer most questions before they are asked; an aimed
    // encode is made only while the search can still finish within one encode of the plain
    // search's seven, asking every open question directly, so a misleading curve costs at most
    // two encodes more.
    constexpr int plainEncodes = encodesPerSearch;
    const int encodesBefore = encodes;
    SizesAtOneScale sizes(picture, targetBytes);
    int low = 0;
    int high = gridSteps;
    std::optional<int> chosen;
    bool encoderFailed = false;
    for (int question = 0; question < encodesPerSearch && !encoderFailed; ++question) {
        const int step = (low + high) / 2;
        while (!sizes.knownFit(step) && !encoderFailed) {
            const int spent = encodes - encodesBefore;
            const bool mayAim = question > 0 && spent + (encodesPerSearch - question) <= plainEncodes + 1;
            encoderFailed = !sizes.encode(mayAim ? sizes.probeFor(step, low, high) : step, encodes);
        }
        if (encoderFailed)
            break;  // the best fit so far stands
        if (*sizes.knownFit(step)) {
            chosen = step;
            low = step;
        } else {
            high = step;
        }
    }
    if (!chosen)
        return std::nullopt;
    std::optional<QByteArray> bytes = sizes.fittingBytes(*chosen, encodes);
    if (!bytes)
        return std::nullopt;
    return std::pair(gridQuality(*chosen), std::move(*bytes));
}

}  // namespace

std::optional<CompressionResult> searchForSize(SearchablePicture& picture, qint64 targetBytes)
{
    CompressionResult result;
    for (int search = 0; search < searches; ++search) {
        if (std::optional<std::pair<double, QByteArray>> found = searchOneScale(picture, targetBytes, result.encodes)) {
            result.quality = found->first;
            result.bytes = std::move(found->second);
            return result;
        }
        picture.shrinkToThreeQuarters();
        ++result.shrinks;
    }
    std::optional<QByteArray> last = picture.encode(lowestQuality);
    ++result.encodes;
    if (!last)
        return std::nullopt;
    result.bytes = std::move(*last);
    result.quality = lowestQuality;
    return result;
}

}  // namespace wendrel
