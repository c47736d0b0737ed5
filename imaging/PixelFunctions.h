#pragma once

#include <QSize>

#include <vips/vips8>

namespace wendrel {

// The size that fits within `limit` on the longest side, keeping the proportions: unchanged
// when it already fits; otherwise each side scaled and rounded half away from zero, at least 1.
QSize fittedSize(QSize size, int limit);

// Half of each side by integer division, at least 1: half of 1 x 1 is 1 x 1.
QSize halfSize(QSize size);

// The side and top-left corner of the centred square.
struct SquareCrop {
    int left;
    int top;
    int side;
};
SquareCrop centredSquare(QSize size);

// Scales the whole image to exactly `size`, with a high-quality filter; transparent edges do
// not darken (the scaling works on premultiplied colour).
vips::VImage resizedTo(const vips::VImage& image, QSize size);

vips::VImage rotatedRight(const vips::VImage& image);
vips::VImage rotatedLeft(const vips::VImage& image);
vips::VImage mirrored(const vips::VImage& image);
vips::VImage croppedSquare(const vips::VImage& image);

// Grey, without alpha: transparent areas become white first.
vips::VImage blackAndWhite(const vips::VImage& image);

}  // namespace wendrel
