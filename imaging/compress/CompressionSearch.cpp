#include "CompressionSearch.h"

#include <algorithm>
#include <cmath>

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

std::optional<CompressionResult> searchForSize(SearchablePicture& picture, qint64 targetBytes)
{
    CompressionResult result;
    for (int search = 0; search < searches; ++search) {
        std::optional<QByteArray> best;
        double bestQuality = 0;
        double low = lowestQuality;
        double high = highestQuality;
        for (int attempt = 0; attempt < encodesPerSearch; ++attempt) {
            const double quality = (low + high) / 2;
            std::optional<QByteArray> bytes = picture.encode(quality);
            ++result.encodes;
            if (!bytes)
                break;
            if (bytes->size() <= targetBytes) {
                best = std::move(bytes);
                bestQuality = quality;
                low = quality;
            } else {
                high = quality;
            }
        }
        if (best) {
            result.bytes = std::move(*best);
            result.quality = bestQuality;
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
