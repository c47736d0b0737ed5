#include "PicturePdfs.h"

#include "TestPdfs.h"
#include "imaging/TestPictures.h"
#include "support/TestEnvironment.h"

#include <QDir>
#include <QFile>
#include <QRegularExpression>
#include <QTemporaryDir>

#include <qpdf/QPDF.hh>
#include <qpdf/QPDFPageDocumentHelper.hh>
#include <qpdf/QPDFWriter.hh>

namespace wendrel::test {

namespace {

using vips::VImage;

std::string bytesOf(void* data, size_t size)
{
    std::string bytes(static_cast<const char*>(data), size);
    g_free(data);
    return bytes;
}

// A JPEG at quality 95, or the bare samples, which qpdf deflates as it writes.
QPDFObjectHandle imageStream(QPDF& pdf, const VImage& pixels, bool jpeg)
{
    size_t size = 0;
    void* data = nullptr;
    if (jpeg)
        pixels.write_to_buffer(".jpg", &data, &size, VImage::option()->set("Q", 95)->set("strip", true));
    else
        data = pixels.write_to_memory(&size);
    const char* colours = pixels.bands() == 1 ? "/DeviceGray" : pixels.bands() == 4 ? "/DeviceCMYK" : "/DeviceRGB";
    QPDFObjectHandle stream = QPDFObjectHandle::newStream(&pdf);
    stream.replaceDict(QPDFObjectHandle::parse("<< /Type /XObject /Subtype /Image /Width " + std::to_string(pixels.width()) + " /Height "
                                               + std::to_string(pixels.height()) + " /ColorSpace " + colours + " /BitsPerComponent 8 >>"));
    stream.replaceStreamData(bytesOf(data, size), jpeg ? QPDFObjectHandle::newName("/DCTDecode") : QPDFObjectHandle::newNull(),
                             QPDFObjectHandle::newNull());
    return pdf.makeIndirectObject(stream);
}

// A form drawing `image` over its unit square, under `matrix`.
QPDFObjectHandle formAround(QPDF& pdf, QPDFObjectHandle image, const QString& matrix)
{
    QPDFObjectHandle form = QPDFObjectHandle::newStream(&pdf, "q 1 0 0 1 0 0 cm /Pic Do Q\n");
    form.replaceDict(QPDFObjectHandle::parse("<< /Type /XObject /Subtype /Form /BBox [0 0 1 1] /Matrix [" + matrix.toStdString()
                                             + "] /Resources << /XObject << >> >> >>"));
    form.getDict().getKey("/Resources").getKey("/XObject").replaceKey("/Pic", image);
    return pdf.makeIndirectObject(form);
}

// QRectF's top is the PDF box's lower y: boxes are written as (x, y, x + w, y + h).
QPDFObjectHandle rectangle(const QRectF& box)
{
    return QPDFObjectHandle::newArray(QPDFObjectHandle::Rectangle(box.left(), box.top(), box.right(), box.bottom()));
}

// Appends a page of `box` turned by `rotate`, drawing `content`.
QPDFObjectHandle addPage(QPDF& pdf, const QRectF& box, int rotate, const std::string& content, QPDFObjectHandle resources)
{
    QPDFObjectHandle page = pdf.makeIndirectObject(QPDFObjectHandle::parse("<< /Type /Page >>"));
    page.replaceKey("/MediaBox", rectangle(box));
    page.replaceKey("/Contents", QPDFObjectHandle::newStream(&pdf, content));
    page.replaceKey("/Resources", resources);
    if (rotate != 0)
        page.replaceKey("/Rotate", QPDFObjectHandle::newInteger(rotate));
    QPDFPageDocumentHelper(pdf).addPage(QPDFPageObjectHelper(page), false);
    return page;
}

}  // namespace

QString writeQpdf(QPDF& pdf, const QString& path)
{
    const QByteArray fileName = QFile::encodeName(path);
    QPDFWriter writer(pdf, fileName.constData());
    writer.write();
    return path;
}

QString writePicturePdf(const QString& path, const PicturePdf& document)
{
    QPDF pdf;
    pdf.emptyPDF();
    QPDFObjectHandle objects = QPDFObjectHandle::newDictionary();
    std::string content = "BT /F1 18 Tf 72 72 Td (" + document.text.toStdString() + ") Tj ET\n";
    for (int i = 0; i < document.pictures.size(); ++i) {
        const TestPicture& picture = document.pictures[i];
        QPDFObjectHandle image = imageStream(pdf, picture.pixels, picture.jpeg);
        if (picture.softMask) {
            const VImage opaque = VImage::black(picture.pixels.width(), picture.pixels.height()).linear(1, 255);
            image.getDict().replaceKey("/SMask", imageStream(pdf, opaque.cast(VIPS_FORMAT_UCHAR), false));
        }
        const std::string name = "/Im" + std::to_string(i);
        objects.replaceKey(name, picture.formMatrix.isEmpty() ? image : formAround(pdf, image, picture.formMatrix));
        content += "q " + picture.drawn.toStdString() + " cm " + name + " Do Q\n";
        if (!picture.drawnAgain.isEmpty())
            content += "q " + picture.drawnAgain.toStdString() + " cm " + name + " Do Q\n";
    }
    QPDFObjectHandle resources = QPDFObjectHandle::parse(
        "<< /Font << /F1 << /Type /Font /Subtype /Type1 /BaseFont /Helvetica /Encoding /WinAnsiEncoding >> >> >>");
    resources.replaceKey("/XObject", objects);
    addPage(pdf, QRectF(0, 0, document.width, document.height), 0, content, resources);
    return writeQpdf(pdf, path);
}

QString writeMarkedPdf(const QString& path, const MarkedPdf& document)
{
    QPDF pdf;
    pdf.emptyPDF();
    for (const MarkedPage& page : document.pages) {
        const QPointF corner = page.mediaBox.topLeft();
        QPDFObjectHandle added = addPage(pdf, page.mediaBox, page.rotate,
                                         "1 0 0 rg " + std::to_string(corner.x()) + " " + std::to_string(corner.y()) + " 72 72 re f\n",
                                         QPDFObjectHandle::newDictionary());
        if (page.cropBox)
            added.replaceKey("/CropBox", rectangle(*page.cropBox));
    }
    if (document.inheritedCropBox)
        pdf.getRoot().getKey("/Pages").replaceKey("/CropBox", rectangle(*document.inheritedCropBox));
    return writeQpdf(pdf, path);
}

QList<BadPdf> writeBadPdfs(const QString& folder)
{
    const QDir here(folder);
    const QByteArray whole = readFile(writeTestPdf(here.filePath(QStringLiteral("whole.pdf")), pagesOfText(3)));
    QFile::remove(here.filePath(QStringLiteral("whole.pdf")));
    writeFile(here.filePath(QStringLiteral("Truncated.pdf")), whole.left(whole.size() / 3));
    writeFile(here.filePath(QStringLiteral("Not a PDF.pdf")), QByteArray("%PDF-1.7\nnothing here\n"));
    size_t size = 0;
    void* jpeg = nullptr;
    VImage::black(16, 16).write_to_buffer(".jpg", &jpeg, &size);
    writeFile(here.filePath(QStringLiteral("Photo.pdf")), QByteArray::fromStdString(bytesOf(jpeg, size)));
    writeTestPdf(here.filePath(QStringLiteral("Locked.pdf")), {.userPassword = QStringLiteral("secret")});

    const QString cantOpen = QStringLiteral("Can't open this PDF");
    return {{here.filePath(QStringLiteral("Truncated.pdf")), cantOpen},
            {here.filePath(QStringLiteral("Not a PDF.pdf")), cantOpen},
            {here.filePath(QStringLiteral("Photo.pdf")), cantOpen},
            {here.filePath(QStringLiteral("Locked.pdf")), QStringLiteral("This PDF is password-protected")}};
}

QStringList pictureList(const QString& path)
{
    QStringList pictures;
    const QStringList lines = toolOutput(QStringLiteral("pdfimages"), {QStringLiteral("-list"), path}).split(u'\n');
    // page num type width height color comp bpc enc ...; two heading lines.
    for (const QString& line : lines.mid(2)) {
        const QStringList columns = line.split(QRegularExpression(QStringLiteral("\\s+")), Qt::SkipEmptyParts);
        if (columns.size() >= 9)
            pictures.append(QStringLiteral("%1 %2x%3 %4 %5").arg(columns[2], columns[3], columns[4], columns[5], columns[8]));
    }
    return pictures;
}

QList<int> jpegQualities(const QString& path)
{
    QTemporaryDir folder;
    QList<int> qualities;
    if (!runTool(QStringLiteral("pdfimages"), {QStringLiteral("-j"), path, folder.filePath(QStringLiteral("picture"))}))
        return qualities;
    for (const QString& jpeg : QDir(folder.path()).entryList({QStringLiteral("*.jpg")}, QDir::Files, QDir::Name))
        qualities.append(
            toolOutput(QStringLiteral("identify"), {QStringLiteral("-format"), QStringLiteral("%Q"), folder.filePath(jpeg)}).toInt());
    return qualities;
}

std::vector<double> renderedMeans(const QString& path)
{
    QTemporaryDir folder;
    const QString stem = folder.filePath(QStringLiteral("page"));
    if (!runTool(QStringLiteral("pdftoppm"), {QStringLiteral("-r"), QStringLiteral("24"), QStringLiteral("-png"),
                                              QStringLiteral("-singlefile"), path, stem}))
        return {};
    const VImage page = decoded(stem + QStringLiteral(".png"));
    std::vector<double> means;
    for (int band = 0; band < 3; ++band)
        means.push_back(page[band].avg());
    return means;
}

}  // namespace wendrel::test
