#pragma once

#include <QList>
#include <QRectF>
#include <QString>

#include <optional>

namespace wendrel::test {

// A page whose orientation can be read back from its pixels: a one-inch red square in the
// lower-left corner of its media box, on white.
struct MarkedPage {
    QRectF mediaBox{0, 0, 612, 792};
    std::optional<QRectF> cropBox{};
    int rotate = 0;
};

struct MarkedPdf {
    QList<MarkedPage> pages{MarkedPage{}};
    std::optional<QRectF> inheritedCropBox{};  // set on the page tree's root, for every page
};

// Writes the document with qpdf and returns the path.
QString writeMarkedPdf(const QString& path, const MarkedPdf& pdf);

}  // namespace wendrel::test
