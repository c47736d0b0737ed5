#pragma once

#include <QSizeF>
#include <QString>

class QPainter;

namespace wendrel {

// Page numbers: "i / n" in the regular font at 10 pt, dark grey, centred across the page as
// displayed, the bottom of its line 20 pt above the page's displayed bottom edge.
QString pageNumberText(qsizetype pageNumber, qsizetype pageCount);
void paintPageNumber(QPainter& painter, const QSizeF& pageSize, const QString& text);

// Watermarks: the text in the bold font, red at 22% opacity, centred on the page and turned
// 36° counter-clockwise, rising from left to right.
//
// Its size starts at the page's diagonal / 9, so the mark looks alike on pages of any size and
// in either orientation, and shrinks until the turned text's bounding box fits within 90% of
// the page's width and height, so a long text is never cut at the edges.
double watermarkFontSize(const QSizeF& pageSize, const QSizeF& textSizeAtOnePoint);
void paintWatermark(QPainter& painter, const QSizeF& pageSize, const QString& text);

}  // namespace wendrel
