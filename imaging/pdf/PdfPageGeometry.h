#pragma once

#include <QSize>
#include <QSizeF>

#include <optional>

namespace wendrel {

// A page's /Rotate as 0, 90, 180 or 270: any multiple of 90, negative or past a full turn,
// turns the same way its remainder does. A value that is no multiple of 90 is not a valid
// rotation and leaves the page upright, as PDF readers treat it.
int normalisedRotation(int degrees);

// The page as it is seen, in points: the media box, with width and height exchanged when the
// page is turned a quarter.
QSizeF displayedSize(QSizeF mediaBox, int rotation);

// The largest bitmap a page is drawn into: an A0 poster at 300 DPI (139 million pixels) fits,
// a page the size of a wall does not. No side may exceed what the drawing library (cairo)
// takes either.
inline constexpr qint64 largestPagePixels = 150'000'000;
inline constexpr int largestPageSide = 32'767;

// The pixel size of a page drawn at `dpi`: its displayed size times dpi / 72, each side
// rounded to the nearest pixel and at least one. Empty when the bitmap would be larger than
// the limits above (or the box is no size at all): "Page is too large".
std::optional<QSize> renderedPixelSize(QSizeF mediaBox, int rotation, double dpi);

}  // namespace wendrel
