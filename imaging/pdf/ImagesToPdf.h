#pragma once

#include <QByteArray>
#include <QList>
#include <QSize>
#include <QSizeF>
#include <QString>

#include <qpdf/QPDF.hh>

namespace wendrel {

class OperationContext;

// One picture ready for a PDF page: its pixels encoded the way PDF reads them directly.
struct PdfPicture {
    QSize pixels;
    int components = 3;   // 3 for RGB, 1 for grey
    bool isJpeg = false;  // data is a JPEG stream; otherwise deflated 8-bit samples
    QByteArray data;
    QByteArray alpha;     // deflated 8-bit alpha samples, empty when opaque
    QSizeF pageSize{};    // the page it fills, in points; empty: pdfPageSize(pixels)
};

// The page for a picture, in points: a point per pixel, shrunk so no side exceeds 1190.
QSizeF pdfPageSize(QSize pixels);

// Loads a picture for a page, for the job `context` belongs to. A JPEG that needs no turning
// and no colour conversion goes in as it is, without re-encoding; other photos as JPEG;
// graphics and anything transparent losslessly. Throws OperationError "Can't read this image".
PdfPicture pdfPictureFromFile(const QString& path, const OperationContext& context);

// Appends a page for `picture` to `pdf`: the page has its pageSize (else pdfPageSize), the
// picture fills it.
// Returns the new page.
QPDFObjectHandle addPicturePage(QPDF& pdf, const PdfPicture& picture);

// Writes one PDF with a page per picture, in order, each picture filling its page. Throws
// "Couldn't create the PDF", also when there are no pictures.
void writePicturesPdf(const QList<PdfPicture>& pictures, const QString& path);

}  // namespace wendrel
