#pragma once

#include <QFont>
#include <QList>
#include <QSizeF>
#include <QString>

#include <functional>

class QPainter;

namespace wendrel {

class OperationContext;

// Draws overlay page `index` of `count`. The painter's coordinates are points with the origin at
// the top-left corner of the page as displayed and y growing downwards; `pageSize` is that
// page's size.
using OverlayPainter =
    std::function<void(QPainter& painter, const QSizeF& pageSize, qsizetype index, qsizetype count)>;

// Writes a PDF with one page per size through Qt's PDF writer, each drawn by `paint`. Fonts are
// embedded once, as subsets of the glyphs used, however many pages use them. Checks for
// cancellation between pages. Throws OperationError "Couldn't create the PDF" when the
// document can't be made, also in a process that has no Qt fonts (no QGuiApplication).
void writeOverlayPdf(const QList<QSizeF>& pageSizes, const OverlayPainter& paint, const QString& path,
                     const OperationContext& context);

// The font the overlays write with: DejaVu Sans, the font installed with Wendrel, then outline
// fonts for Chinese, Japanese and Korean and for emoji, then whatever the system finds for any
// other script. Every one of them embeds.
QFont overlayFont(double pointSize, bool bold);

}  // namespace wendrel
