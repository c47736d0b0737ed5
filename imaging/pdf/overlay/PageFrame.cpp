#include "PageFrame.h"

#include <qpdf/QPDFPageObjectHelper.hh>

#include <cmath>

namespace wendrel {

namespace {

QRectF rectangleOf(QPDFObjectHandle box)
{
    if (!box.isRectangle())
        return {};
    const QPDFObjectHandle::Rectangle corners = box.getArrayAsRectangle();
    // Any two opposite corners may be given, in any order.
    return QRectF(QPointF(corners.llx, corners.lly), QPointF(corners.urx, corners.ury)).normalized();
}

// /Rotate must be a multiple of 90; readers round whatever else they meet.
int quarterTurns(QPDFObjectHandle rotate)
{
    if (!rotate.isNumber())
        return 0;
    const double degrees = rotate.getNumericValue();
    if (!std::isfinite(degrees) || std::abs(degrees) > 1e6)
        return 0;
    const int turns = int(std::lround(degrees / 90.0)) % 4;
    return (turns + 4) % 4 * 90;
}

}  // namespace

QSizeF PageFrame::displayedSize() const
{
    const QSizeF stored = box.size() * userUnit;
    return rotation == 90 || rotation == 270 ? stored.transposed() : stored;
}

std::array<double, 6> PageFrame::displayedToUserSpace() const
{
    const double s = 1.0 / userUnit;
    const double x0 = box.left(), y0 = box.top(), x1 = box.right(), y1 = box.bottom();
    // QRectF's "top" is its smaller y: here the lower edge of the box, as PDF measures.
    switch (rotation) {
    case 90: return {0, s, -s, 0, x1, y0};
    case 180: return {-s, 0, 0, -s, x1, y1};
    case 270: return {0, -s, s, 0, x0, y1};
    default: return {s, 0, 0, s, x0, y0};
    }
}

PageFrame pageFrame(QPDFPageObjectHelper& page)
{
    PageFrame frame;
    const QRectF media = rectangleOf(page.getMediaBox());
    const QRectF crop = rectangleOf(page.getCropBox());
    // What shows is the crop box clipped to the media box; a crop box outside it is ignored.
    const QRectF visible = crop.intersected(media);
    frame.box = visible.isValid() ? visible : media;
    frame.rotation = quarterTurns(page.getAttribute("/Rotate", false));
    QPDFObjectHandle userUnit = page.getAttribute("/UserUnit", false);
    if (userUnit.isNumber()) {
        const double unit = userUnit.getNumericValue();
        if (std::isfinite(unit) && unit > 0.01 && unit < 1000)
            frame.userUnit = unit;
    }
    return frame;
}

}  // namespace wendrel
