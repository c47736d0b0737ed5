#include "PicturePdfs.h"

#include "imaging/TestPictures.h"

#include <QFile>
#include <QRegularExpression>
#include <QTemporaryDir>

#include <qpdf/QPDF.hh>
#include <qpdf/QPDFPageDocumentHelper.hh>
#include <qpdf/QPDFWriter.hh>

#include <zlib.h>

namespace wendrel::test {

namespace {

using vips::VImage;

std::string bytesOf(void* data, size_t size)
{
    std::string bytes(static_cast<const char*>(data), size);
    g_free(data);
    return bytes;
}

std::string deflated(const VImage& image)
{
    size_t size = 0;
    void* memory = image.write_to_memory(&size);
    const std::string samples = bytesOf(memory, size);
    uLongf length = compressBound(uLong(samples.size()));
    std::string out(length, '\0');
    compress2(reinterpret_cast<Bytef*>(out.data()), &length, reinterpret_cast<const Bytef*>(samples.data()),
              uLong(samples.size()), 6);
    out.resize(length);
    return out;
}

const char* colourSpace(int bands)
{
    return bands == 1 ? "/DeviceGray" : bands == 4 ? "/DeviceCMYK" : "/DeviceRGB";
}

QPDFObjectHandle imageStream(QPDF& pdf, const VImage& pixels, bool jpeg)
{
    std::string data;
    if (jpeg) {
        size_t size = 0;
        void* buffer = nullptr;
        pixels.write_to_buffer(".jpg", &buffer, &size, VImage::option()->set("Q", 95)->set("strip", true));
        data = bytesOf(buffer, size);
    } else {
        data = deflated(pixels);
    }
    QPDFObjectHandle stream = QPDFObjectHandle::newStream(&pdf);
    stream.replaceStreamData(data, QPDFObjectHandle::newName(jpeg ? "/DCTDecode" : "/FlateDecode"),
                             QPDFObjectHandle::newNull());
    QPDFObjectHandle dictionary = stream.getDict();
    dictionary.replaceKey("/Type", QPDFObjectHandle::newName("/XObject"));
    dictionary.replaceKey("/Subtype", QPDFObjectHandle::newName("/Image"));
    dictionary.replaceKey("/Width", QPDFObjectHandle::newInteger(pixels.width()));
    dictionary.replaceKey("/Height", QPDFObjectHandle::newInteger(pixels.height()));
    dictionary.replaceKey("/ColorSpace", QPDFObjectHandle::newName(colourSpace(pixels.bands())));
    dictionary.replaceKey("/BitsPerComponent", QPDFObjectHandle::newInteger(8));
    return pdf.makeIndirectObject(stream);
}

// A form drawing `image` over its unit square, under `matrix`.
QPDFObjectHandle formAround(QPDF& pdf, QPDFObjectHandle image, const QString& matrix)
{
    QPDFObjectHandle form = QPDFObjectHandle::newStream(&pdf, "q 1 0 0 1 0 0 cm /Pic Do Q\n");
    QPDFObjectHandle dictionary = form.getDict();
    dictionary.replaceKey("/Type", QPDFObjectHandle::newName("/XObject"));
    dictionary.replaceKey("/Subtype", QPDFObjectHandle::newName("/Form"));
    dictionary.replaceKey("/BBox", QPDFObjectHandle::parse("[0 0 1 1]"));
    dictionary.replaceKey("/Matrix", QPDFObjectHandle::parse("[" + matrix.toStdString() + "]"));
    dictionary.replaceKey("/Resources", QPDFObjectHandle::parse("<< /XObject << >> >>"));
    dictionary.getKey("/Resources").getKey("/XObject").replaceKey("/Pic", image);
    return pdf.makeIndirectObject(form);
}

}  // namespace

VImage asCmyk(const VImage& image) { return image.copy(VImage::option()->set("interpretation", VIPS_INTERPRETATION_CMYK)); }

QString writePicturePdf(const QString& path, const PicturePdf& spec)
{
    QPDF pdf;
    pdf.emptyPDF();
    QPDFObjectHandle objects = QPDFObjectHandle::newDictionary();
    std::string content = "BT /F1 18 Tf 72 72 Td (" + spec.text.toStdString() + ") Tj ET\n";
    for (int i = 0; i < spec.pictures.size(); ++i) {
        const TestPicture& picture = spec.pictures[i];
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

    QPDFObjectHandle page = QPDFObjectHandle::newDictionary();
    page.replaceKey("/Type", QPDFObjectHandle::newName("/Page"));
    page.replaceKey("/MediaBox", QPDFObjectHandle::newArray(QPDFObjectHandle::Rectangle(0, 0, spec.width, spec.height)));
    page.replaceKey("/Contents", QPDFObjectHandle::newStream(&pdf, content));
    page.replaceKey("/Resources", resources);
    if (spec.rotate != 0)
        page.replaceKey("/Rotate", QPDFObjectHandle::newInteger(spec.rotate));
    QPDFPageDocumentHelper(pdf).addPage(QPDFPageObjectHelper(pdf.makeIndirectObject(page)), false);

    const QByteArray fileName = QFile::encodeName(path);
    QPDFWriter writer(pdf, fileName.constData());
    writer.write();
    return path;
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

QStringList pageSizes(const QString& path)
{
    const QString info = toolOutput(QStringLiteral("pdfinfo"), {QStringLiteral("-f"), QStringLiteral("1"),
                                                                QStringLiteral("-l"), QStringLiteral("9999"), path});
    QStringList sizes;
    const QRegularExpression size(QStringLiteral("^Page +\\d+ size: +(.*?)( \\(.*\\))?$"));
    const QRegularExpression turn(QStringLiteral("^Page +\\d+ rot: +(\\d+)$"));
    for (const QString& line : info.split(u'\n')) {
        if (const QRegularExpressionMatch match = size.match(line); match.hasMatch())
            sizes.append(match.captured(1));
        else if (const QRegularExpressionMatch rotation = turn.match(line); rotation.hasMatch() && !sizes.isEmpty())
            sizes.last() += QStringLiteral(", ") + rotation.captured(1);
    }
    return sizes;
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
