#include "MarkedPdfs.h"

#include <QFile>

#include <qpdf/QPDF.hh>
#include <qpdf/QPDFPageDocumentHelper.hh>
#include <qpdf/QPDFWriter.hh>

namespace wendrel::test {

namespace {

QPDFObjectHandle rectangle(const QRectF& box)
{
    return QPDFObjectHandle::newArray(QPDFObjectHandle::Rectangle(box.left(), box.top(), box.right(), box.bottom()));
}

}  // namespace

QString writeMarkedPdf(const QString& path, const MarkedPdf& spec)
{
    QPDF pdf;
    pdf.emptyPDF();
    QPDFPageDocumentHelper pages(pdf);
    for (const MarkedPage& page : spec.pages) {
        // QRectF's top is the PDF box's lower y: boxes are written as (x, y, x + w, y + h).
        const std::string content = "1 0 0 rg " + std::to_string(page.mediaBox.left()) + " "
                                    + std::to_string(page.mediaBox.top()) + " 72 72 re f\n";
        QPDFObjectHandle dictionary = QPDFObjectHandle::newDictionary();
        dictionary.replaceKey("/Type", QPDFObjectHandle::newName("/Page"));
        dictionary.replaceKey("/MediaBox", rectangle(page.mediaBox));
        if (page.cropBox)
            dictionary.replaceKey("/CropBox", rectangle(*page.cropBox));
        if (page.rotate != 0)
            dictionary.replaceKey("/Rotate", QPDFObjectHandle::newInteger(page.rotate));
        dictionary.replaceKey("/Contents", QPDFObjectHandle::newStream(&pdf, content));
        dictionary.replaceKey("/Resources", QPDFObjectHandle::newDictionary());
        pages.addPage(QPDFPageObjectHelper(pdf.makeIndirectObject(dictionary)), false);
    }
    if (spec.inheritedCropBox)
        pdf.getRoot().getKey("/Pages").replaceKey("/CropBox", rectangle(*spec.inheritedCropBox));

    const QByteArray fileName = QFile::encodeName(path);
    QPDFWriter writer(pdf, fileName.constData());
    writer.write();
    return path;
}

}  // namespace wendrel::test
