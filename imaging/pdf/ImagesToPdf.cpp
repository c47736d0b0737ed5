#include "ImagesToPdf.h"

#include "imaging/ImageFormat.h"
#include "imaging/ImageEntries.h"
#include "imaging/ImageWriter.h"
#include "operations/ContentType.h"
#include "operations/Logging.h"
#include "operations/OperationError.h"

#include <QCoreApplication>
#include <QFile>

#include <qpdf/QPDF.hh>
#include <qpdf/QPDFPageDocumentHelper.hh>
#include <qpdf/QPDFWriter.hh>

#include <zlib.h>

#include <algorithm>

namespace wendrel {

namespace {

using vips::VImage;

// Photos go into the PDF as JPEG at this quality, high enough not to show.
constexpr double photoQuality = 0.92;
constexpr double largestPageSide = 1190;

OperationError pdfError()
{
    return OperationError(QCoreApplication::translate("ImagesToPdf", "Couldn't create the PDF"));
}

QByteArray deflated(const void* data, size_t size)
{
    uLongf length = compressBound(uLong(size));
    QByteArray out(qsizetype(length), Qt::Uninitialized);
    if (compress2(reinterpret_cast<Bytef*>(out.data()), &length, static_cast<const Bytef*>(data), uLong(size), 6) != Z_OK)
        throw pdfError();
    out.resize(qsizetype(length));
    return out;
}

QByteArray deflatedPixels(const VImage& image)
{
    size_t size = 0;
    void* pixels = image.write_to_memory(&size);
    QByteArray result;
    try {
        result = deflated(pixels, size);
    } catch (...) {
        g_free(pixels);
        throw;
    }
    g_free(pixels);
    return result;
}

// A JPEG whose bytes a PDF can show as they are: upright, 8-bit RGB or grey, no profile to
// convert from.
bool embedsAsIs(const QString& path)
{
    if (ContentType::ofFile(path) != ContentType::jpeg())
        return false;
    try {
        const VImage header = VImage::new_from_file(QFile::encodeName(path).constData());
        const int orientation = header.get_typeof(VIPS_META_ORIENTATION) ? header.get_int(VIPS_META_ORIENTATION) : 1;
        const VipsInterpretation interpretation = header.interpretation();
        return orientation == 1 && !header.get_typeof(VIPS_META_ICC_NAME)
               && (interpretation == VIPS_INTERPRETATION_sRGB || interpretation == VIPS_INTERPRETATION_B_W)
               && (header.bands() == 3 || header.bands() == 1);
    } catch (const vips::VError&) {
        return false;
    }
}

bool isPhotoFormat(const QString& path)
{
    const std::optional<ImageFormat> format = imageFormatFor(ContentType::ofFile(path));
    return format && imageTarget(*format).lossy;
}

QPDFObjectHandle pictureObject(QPDF& pdf, const PdfPicture& picture)
{
    QPDFObjectHandle dictionary = QPDFObjectHandle::newDictionary();
    dictionary.replaceKey("/Type", QPDFObjectHandle::newName("/XObject"));
    dictionary.replaceKey("/Subtype", QPDFObjectHandle::newName("/Image"));
    dictionary.replaceKey("/Width", QPDFObjectHandle::newInteger(picture.pixels.width()));
    dictionary.replaceKey("/Height", QPDFObjectHandle::newInteger(picture.pixels.height()));
    dictionary.replaceKey("/ColorSpace",
                          QPDFObjectHandle::newName(picture.components == 1 ? "/DeviceGray" : "/DeviceRGB"));
    dictionary.replaceKey("/BitsPerComponent", QPDFObjectHandle::newInteger(8));

    QPDFObjectHandle stream = QPDFObjectHandle::newStream(&pdf);
    stream.replaceStreamData(picture.data.toStdString(),
                             QPDFObjectHandle::newName(picture.isJpeg ? "/DCTDecode" : "/FlateDecode"),
                             QPDFObjectHandle::newNull());
    for (const std::string& key : dictionary.getKeys())
        stream.getDict().replaceKey(key, dictionary.getKey(key));

    if (!picture.alpha.isEmpty()) {
        QPDFObjectHandle mask = QPDFObjectHandle::newStream(&pdf);
        mask.replaceStreamData(picture.alpha.toStdString(), QPDFObjectHandle::newName("/FlateDecode"),
                               QPDFObjectHandle::newNull());
        QPDFObjectHandle maskDictionary = mask.getDict();
        maskDictionary.replaceKey("/Type", QPDFObjectHandle::newName("/XObject"));
        maskDictionary.replaceKey("/Subtype", QPDFObjectHandle::newName("/Image"));
        maskDictionary.replaceKey("/Width", QPDFObjectHandle::newInteger(picture.pixels.width()));
        maskDictionary.replaceKey("/Height", QPDFObjectHandle::newInteger(picture.pixels.height()));
        maskDictionary.replaceKey("/ColorSpace", QPDFObjectHandle::newName("/DeviceGray"));
        maskDictionary.replaceKey("/BitsPerComponent", QPDFObjectHandle::newInteger(8));
        stream.getDict().replaceKey("/SMask", mask);
    }
    return stream;
}

}  // namespace

QSizeF pdfPageSize(QSize pixels)
{
    const double scale = std::min(1.0, largestPageSide / std::max(pixels.width(), pixels.height()));
    return {scale * pixels.width(), scale * pixels.height()};
}

QPDFObjectHandle addPicturePage(QPDF& pdf, const PdfPicture& picture)
{
    const QSizeF pageSize = picture.pageSize.isEmpty() ? pdfPageSize(picture.pixels) : picture.pageSize;
    const std::string width = QByteArray::number(pageSize.width(), 'f', 4).toStdString();
    const std::string height = QByteArray::number(pageSize.height(), 'f', 4).toStdString();

    QPDFObjectHandle resources = QPDFObjectHandle::newDictionary();
    QPDFObjectHandle pictures = QPDFObjectHandle::newDictionary();
    pictures.replaceKey("/Im0", pdf.makeIndirectObject(pictureObject(pdf, picture)));
    resources.replaceKey("/XObject", pictures);

    // The picture fills the page: scaled to the page size, drawn at the origin.
    const std::string content = "q " + width + " 0 0 " + height + " 0 0 cm /Im0 Do Q\n";
    QPDFObjectHandle contents = QPDFObjectHandle::newStream(&pdf, content);

    QPDFObjectHandle page = QPDFObjectHandle::newDictionary();
    page.replaceKey("/Type", QPDFObjectHandle::newName("/Page"));
    page.replaceKey("/MediaBox", QPDFObjectHandle::newArray(std::vector<QPDFObjectHandle>{
                                     QPDFObjectHandle::newInteger(0), QPDFObjectHandle::newInteger(0),
                                     QPDFObjectHandle::newReal(width), QPDFObjectHandle::newReal(height)}));
    page.replaceKey("/Resources", resources);
    page.replaceKey("/Contents", contents);
    QPDFPageObjectHelper added(pdf.makeIndirectObject(page));
    QPDFPageDocumentHelper(pdf).addPage(added, false);
    return added.getObjectHandle();
}

PdfPicture pdfPictureFromFile(const QString& path, const OperationContext& context)
{
    const PictureFile file(path, context);
    PdfPicture picture;
    if (embedsAsIs(path)) {
        // Decoding proves the file is whole before its bytes go into the document.
        const VImage image = file.source.decode();
        QFile bytes(path);
        if (!bytes.open(QIODevice::ReadOnly))
            throw OperationError(QCoreApplication::translate("ImageLoader", "Can't read this image"));
        picture.pixels = {image.width(), image.height()};
        picture.components = image.bands() >= 3 ? 3 : 1;
        picture.isJpeg = true;
        picture.data = bytes.readAll();
        return picture;
    }

    const VImage image = file.source.decode();
    picture.pixels = {image.width(), image.height()};
    const bool alpha = image.has_alpha();
    const VImage colour = image.extract_band(0, VImage::option()->set("n", alpha ? image.bands() - 1 : image.bands()));
    picture.components = colour.bands() >= 3 ? 3 : 1;
    try {
        if (alpha)
            picture.alpha = deflatedPixels(image[image.bands() - 1]);
        if (!alpha && isPhotoFormat(path)) {
            picture.isJpeg = true;
            picture.data = encodeImage(colour, ImageFormat::jpeg, photoQuality, MetadataPolicy::drop);
        } else {
            picture.data = deflatedPixels(colour);
        }
    } catch (const vips::VError& error) {
        qCDebug(lcJobs) << "pdf picture failed:" << path << error.what();
        throw pdfError();
    }
    return picture;
}

void writePicturesPdf(const QList<PdfPicture>& pictures, const QString& path)
{
    if (pictures.isEmpty())
        throw pdfError();
    try {
        QPDF pdf;
        pdf.emptyPDF();
        for (const PdfPicture& picture : pictures)
            addPicturePage(pdf, picture);
        // The writer keeps the file name's pointer until write(): the bytes must outlive it.
        const QByteArray fileName = QFile::encodeName(path);
        QPDFWriter writer(pdf, fileName.constData());
        // The pictures are compressed already; keep them exactly as they are.
        writer.setDecodeLevel(qpdf_dl_none);
        writer.setCompressStreams(true);
        writer.write();
    } catch (const std::exception& error) {
        qCDebug(lcJobs) << "pdf write failed:" << path << error.what();
        throw pdfError();
    }
}

}  // namespace wendrel
