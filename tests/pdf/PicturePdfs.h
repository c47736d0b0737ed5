#pragma once

#include <QList>
#include <QSize>
#include <QString>

#include <vips/vips8>

#include <ostream>

// Failed expectations show lists of strings as text.
inline void PrintTo(const QStringList& list, std::ostream* out) { *out << '{' << list.join(QStringLiteral(" | ")).toStdString() << '}'; }

namespace wendrel::test {

// One picture in a test document and how it is drawn.
struct TestPicture {
    vips::VImage pixels;      // 1, 3 or 4 bands (4: CMYK) of 8-bit samples
    bool jpeg = true;         // stored as JPEG at quality 95; otherwise deflated samples
    bool softMask = false;    // a grey /SMask of its size goes with it
    QString drawn = QStringLiteral("288 0 0 216 72 400");  // the "cm" that places its unit square
    QString formMatrix{};     // when given, drawn inside a form XObject with this /Matrix
    QString drawnAgain{};     // when given, the same object is drawn a second time, placed so
};

struct PicturePdf {
    QList<TestPicture> pictures;
    double width = 612;
    double height = 792;
    int rotate = 0;
    QString text = QStringLiteral("Words stay words");
};

// Writes the one-page document with qpdf and returns the path.
QString writePicturePdf(const QString& path, const PicturePdf& pdf);

// What pdfimages -list says of a document's pictures, a line each: "image 300x225 rgb jpeg",
// "smask 300x225 gray image" (type, size, colour, encoding).
QStringList pictureList(const QString& path);

// What pdfinfo says of each page's size and turn: "612 x 792 pts, 0" (the paper's name, when it
// has one, left out).
QStringList pageSizes(const QString& path);

// The mean of each RGB band of page 1 rendered by pdftoppm at 24 per inch.
std::vector<double> renderedMeans(const QString& path);

// `image` with its interpretation set to CMYK, so that its 4th band is K, not alpha.
vips::VImage asCmyk(const vips::VImage& image);

}  // namespace wendrel::test
