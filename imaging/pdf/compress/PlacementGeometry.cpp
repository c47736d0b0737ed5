#include "PlacementGeometry.h"

#include <algorithm>
#include <cmath>

namespace wendrel {

namespace {

constexpr double pointsPerInch = 72;
constexpr int longestSideInInches = 12;

}  // namespace

PdfMatrix operator*(const PdfMatrix& first, const PdfMatrix& second)
{
    return {
        first.a * second.a + first.b * second.c,
        first.a * second.b + first.b * second.d,
        first.c * second.a + first.d * second.c,
        first.c * second.b + first.d * second.d,
        first.e * second.a + first.f * second.c + second.e,
        first.e * second.b + first.f * second.d + second.f,
    };
}

QSizeF placedSize(const PdfMatrix& ctm)
{
    // The square's x side runs along (a, b), its y side along (c, d); e and f only move it.
    return {std::hypot(ctm.a, ctm.b), std::hypot(ctm.c, ctm.d)};
}

QSizeF largerPlacement(QSizeF first, QSizeF second)
{
    return {std::max(first.width(), second.width()), std::max(first.height(), second.height())};
}

QSize downsampledSize(QSize pixels, QSizeF placed, int pixelsPerInch)
{
    if (pixels.isEmpty() || pixelsPerInch <= 0)
        return pixels;
    const auto needed = [&](double points) { return std::ceil(points / pointsPerInch * pixelsPerInch); };
    double scale = std::max(needed(placed.width()) / pixels.width(), needed(placed.height()) / pixels.height());
    if (!std::isfinite(scale))  // a placement too large to tell: no smaller than the limit allows
        scale = 1;
    const double longestAllowed = double(longestSideInInches) * pixelsPerInch;
    scale = std::min({scale, 1.0, longestAllowed / std::max(pixels.width(), pixels.height())});
    const auto side = [&](int length) { return std::max(1, int(std::lround(length * scale))); };
    return {side(pixels.width()), side(pixels.height())};
}

}  // namespace wendrel
