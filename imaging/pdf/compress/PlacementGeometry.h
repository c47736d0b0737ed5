#pragma once

#include <QSize>
#include <QSizeF>

namespace wendrel {

// A PDF matrix [a b c d e f]: the point (x, y) goes to (a x + c y + e, b x + d y + f).
struct PdfMatrix {
    double a = 1, b = 0, c = 0, d = 1, e = 0, f = 0;
};

// `first` applied, then `second`: "cm" makes `operand * current` the current matrix.
PdfMatrix operator*(const PdfMatrix& first, const PdfMatrix& second);

// A picture in a PDF fills the unit square of the space it is drawn in; `ctm` maps that
// square onto the page (the current transformation matrix at its "Do", in points). The result
// is how long its two sides come out on the page, in points: a picture turned or skewed is
// as wide as its side is long, not as its shadow on the x axis.
QSizeF placedSize(const PdfMatrix& ctm);

// The larger of two placements, side by side: the pixels one picture needs to look as sharp
// wherever it is drawn.
QSizeF largerPlacement(QSizeF first, QSizeF second);

// The pixel size a picture of `pixels` is stored at when its largest placement is `placed`
// points and the level keeps `pixelsPerInch`: scaled evenly so that each side has at least
// the pixels its placement needs, never enlarged, and never more than 12 × pixelsPerInch
// pixels a side. A picture 1200 pixels wide drawn 2 inches wide at 150 per inch becomes 300
// pixels wide.
QSize downsampledSize(QSize pixels, QSizeF placed, int pixelsPerInch);

}  // namespace wendrel
