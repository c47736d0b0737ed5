#include "PdfCompressionLevels.h"

#include <cmath>

namespace wendrel {

PdfCompressionLevel pdfCompressionLevel(QualityLevel quality)
{
    switch (quality) {
    case QualityLevel::high: return {0.8, 200};
    case QualityLevel::balanced: return {0.65, 150};
    case QualityLevel::small: return {0.35, 80};
    }
    return {0.65, 150};
}

qint64 pdfTargetBytes(double megabytes)
{
    // Multiplying first keeps decimal megabytes exact where the product is whole: 2.3 MB is
    // 2,300,000 bytes, not 2,299,999. Not a number and negative targets are zero.
    const double bytes = std::floor(megabytes * 1'000'000 + 1e-6);
    if (!(bytes > 0))
        return 0;
    return bytes >= 9.0e18 ? qint64(9'000'000'000'000'000'000) : qint64(bytes);
}

std::size_t chooseLadderLevel(std::span<const PdfCompressionLevel> ladder, qint64 targetBytes,
                              const std::function<qint64(const PdfCompressionLevel&)>& compressedSize)
{
    std::size_t smallest = 0;
    qint64 smallestBytes = 0;
    for (std::size_t step = 0; step < ladder.size(); ++step) {
        const qint64 bytes = compressedSize(ladder[step]);
        if (bytes <= targetBytes)
            return step;
        if (step == 0 || bytes < smallestBytes) {
            smallest = step;
            smallestBytes = bytes;
        }
    }
    return smallest;
}

}  // namespace wendrel
