#include "PdfPageGeometry.h"

#include <cmath>

namespace wendrel {

int normalisedRotation(int degrees)
{
    if (degrees % 90 != 0)
        return 0;
    return ((degrees % 360) + 360) % 360;
}

QSizeF displayedSize(QSizeF mediaBox, int rotation)
{
    const QSizeF box(std::abs(mediaBox.width()), std::abs(mediaBox.height()));
    return normalisedRotation(rotation) % 180 == 0 ? box : box.transposed();
}

std::optional<QSize> renderedPixelSize(QSizeF mediaBox, int rotation, double dpi)
{
    const QSizeF points = displayedSize(mediaBox, rotation);
    const double scale = dpi / 72;
    // Computed in floating point first: a hostile box must not overflow an int on its way to
    // being refused.
    const double width = std::max(1.0, std::round(points.width() * scale));
    const double height = std::max(1.0, std::round(points.height() * scale));
    if (!std::isfinite(width) || !std::isfinite(height) || !(dpi > 0))
        return std::nullopt;
    if (width > largestPageSide || height > largestPageSide || width * height > double(largestPagePixels))
        return std::nullopt;
    return QSize(int(width), int(height));
}

}  // namespace wendrel
