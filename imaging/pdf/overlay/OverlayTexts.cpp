#include "OverlayTexts.h"

#include "OverlayPdf.h"

#include <QFontMetricsF>
#include <QPainter>

#include <algorithm>
#include <cmath>

namespace wendrel {

namespace {

constexpr double pageNumberPointSize = 10;
constexpr double pageNumberMargin = 20;
const QColor pageNumberColour = QColor::fromRgbF(1.0 / 3, 1.0 / 3, 1.0 / 3);

constexpr double watermarkAngle = 0.6283185307179586;  // radians: 36°
constexpr double watermarkShare = 1.0 / 9;             // of the page's diagonal
constexpr double watermarkFill = 0.9;                  // of the page the turned text may cover
const QColor watermarkColour = QColor::fromRgbF(1, 0, 0, 0.22);

// Fonts scale linearly (the overlay font is unhinted), so a text is measured once, large
// enough for precision, and its size at any point size follows.
constexpr double measuringPointSize = 100;

QSizeF textSize(const QFontMetricsF& metrics, const QString& text)
{
    return {metrics.horizontalAdvance(text), metrics.ascent() + metrics.descent()};
}

}  // namespace

QString pageNumberText(qsizetype pageNumber, qsizetype pageCount)
{
    return QStringLiteral("%1 / %2").arg(pageNumber).arg(pageCount);
}

void paintPageNumber(QPainter& painter, const QSizeF& pageSize, const QString& text)
{
    const QFont font = overlayFont(pageNumberPointSize, false);
    const QFontMetricsF metrics(font, painter.device());
    painter.setFont(font);
    painter.setPen(pageNumberColour);
    const double x = pageSize.width() / 2 - metrics.horizontalAdvance(text) / 2;
    // drawText places the baseline; the line's bottom is the descent below it.
    const double baseline = pageSize.height() - pageNumberMargin - metrics.descent();
    painter.drawText(QPointF(x, baseline), text);
}

double watermarkFontSize(const QSizeF& pageSize, const QSizeF& textSizeAtOnePoint)
{
    const double cosine = std::cos(watermarkAngle), sine = std::sin(watermarkAngle);
    const double width = textSizeAtOnePoint.width(), height = textSizeAtOnePoint.height();
    // The bounding box of a w × h box turned by the angle, per point of font size.
    const double boxWidth = width * cosine + height * sine;
    const double boxHeight = width * sine + height * cosine;
    double size = std::hypot(pageSize.width(), pageSize.height()) * watermarkShare;
    if (boxWidth > 0)
        size = std::min(size, watermarkFill * pageSize.width() / boxWidth);
    if (boxHeight > 0)
        size = std::min(size, watermarkFill * pageSize.height() / boxHeight);
    return size;
}

void paintWatermark(QPainter& painter, const QSizeF& pageSize, const QString& text)
{
    const QFontMetricsF measuring(overlayFont(measuringPointSize, true), painter.device());
    const QSizeF unitSize = textSize(measuring, text) / measuringPointSize;
    const QFont font = overlayFont(watermarkFontSize(pageSize, unitSize), true);
    const QFontMetricsF metrics(font, painter.device());

    painter.save();
    painter.setRenderHint(QPainter::TextAntialiasing);
    painter.setFont(font);
    painter.setPen(watermarkColour);
    painter.translate(pageSize.width() / 2, pageSize.height() / 2);
    // The painter's y grows downwards: a negative angle turns counter-clockwise as seen.
    painter.rotate(-watermarkAngle * 180 / M_PI);
    // Centred on the origin: half the advance to the left, the line box (ascent over descent)
    // split evenly above and below.
    const double baseline = (metrics.ascent() - metrics.descent()) / 2;
    painter.drawText(QPointF(-metrics.horizontalAdvance(text) / 2, baseline), text);
    painter.restore();
}

}  // namespace wendrel
