#pragma once

#include <QList>
#include <QRectF>
#include <QString>
#include <QStringList>

#include <vips/vips8>

#include <optional>
#include <ostream>
#include <vector>

class QPDF;

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

// A one-page document of pictures and a line of text.
struct PicturePdf {
    QList<TestPicture> pictures;
    double width = 612;
    double height = 792;
    QString text = QStringLiteral("Words stay words");
};

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

// Each writes its document with qpdf and returns the path.
QString writePicturePdf(const QString& path, const PicturePdf& pdf);
QString writeMarkedPdf(const QString& path, const MarkedPdf& pdf);
QString writeQpdf(QPDF& pdf, const QString& path);

// Files in `folder` that open as no PDF, each with the message opening it must give: a document
// cut short, a PDF header over nothing, a JPEG named .pdf, a document locked with a password.
struct BadPdf {
    QString path;
    QString message;
};
QList<BadPdf> writeBadPdfs(const QString& folder);

// What pdfimages -list says of a document's pictures, a line each: "image 300x225 rgb jpeg",
// "smask 300x225 gray image" (type, size, colour, encoding).
QStringList pictureList(const QString& path);

// The quality ImageMagick reads from the quantisation tables of each JPEG in the document.
QList<int> jpegQualities(const QString& path);

// The mean of each RGB band of page 1 rendered by pdftoppm at 24 per inch.
std::vector<double> renderedMeans(const QString& path);

}  // namespace wendrel::test
