#include "ImageLoader.h"

#include "ExifOrientation.h"
#include "VipsRuntime.h"
#include "operations/Logging.h"
#include "operations/OperationError.h"

#include <QCoreApplication>
#include <QFile>

namespace wendrel {

namespace {

using vips::VImage;

// Beyond this a picture is refused: 500 megapixels already take 2 GB once decoded with alpha.
// A header that claims billions of pixels is caught here, before anything is allocated.
constexpr qint64 largestPixelCount = 500'000'000;

OperationError unreadable()
{
    return OperationError(QCoreApplication::translate("ImageLoader", "Can't read this image"));
}

QByteArray encodedPath(const QString& path) { return QFile::encodeName(path); }

// Opens the file lazily: only the header is read.
VImage openHeader(const QString& path)
{
    VImage image = VImage::new_from_file(
        encodedPath(path).constData(),
        VImage::option()->set("access", VIPS_ACCESS_RANDOM)->set("fail_on", VIPS_FAIL_ON_TRUNCATED));
    if (qint64(image.width()) * image.height() > largestPixelCount)
        throw unreadable();
    return image;
}

bool swapsSides(const VImage& image)
{
    const int orientation = image.get_typeof(VIPS_META_ORIENTATION) ? image.get_int(VIPS_META_ORIENTATION) : 1;
    return orientation >= 5 && orientation <= 8;
}

QByteArray blob(const VImage& image, const char* field)
{
    if (!image.get_typeof(field))
        return {};
    size_t length = 0;
    const void* data = image.get_blob(field, &length);
    return QByteArray(static_cast<const char*>(data), static_cast<qsizetype>(length));
}

int freeBlob(void* data, void*)
{
    g_free(data);
    return 0;
}

void setBlob(VImage& image, const char* field, const QByteArray& bytes)
{
    void* copy = g_memdup2(bytes.constData(), static_cast<gsize>(bytes.size()));
    image.set(field, freeBlob, copy, static_cast<size_t>(bytes.size()));
}

// The pixels are upright now; an orientation left in EXIF or XMP would turn them again.
VImage withoutOrientation(VImage image)
{
    image = image.copy();
    image.remove(VIPS_META_ORIENTATION);
    if (const QByteArray exif = blob(image, VIPS_META_EXIF_NAME); !exif.isEmpty())
        setBlob(image, VIPS_META_EXIF_NAME, withoutExifOrientation(exif));
    if (const QByteArray xmp = blob(image, VIPS_META_XMP_NAME); !xmp.isEmpty())
        setBlob(image, VIPS_META_XMP_NAME, withoutXmpOrientation(xmp));
    return image;
}

bool isGrey(VipsInterpretation interpretation)
{
    return interpretation == VIPS_INTERPRETATION_B_W || interpretation == VIPS_INTERPRETATION_GREY16;
}

// 8-bit sRGB or grey, at most one alpha band.
VImage standardised(VImage image)
{
    const bool alpha = image.has_alpha();
    const VipsInterpretation interpretation = image.guess_interpretation();
    const int colourBands = isGrey(interpretation) ? 1 : std::min(3, image.bands() - (alpha ? 1 : 0));
    VImage alphaBand;
    if (alpha)
        alphaBand = image.extract_band(image.bands() - 1);

    VImage colour = image.extract_band(0, VImage::option()->set("n", std::max(1, image.bands() - (alpha ? 1 : 0))));
    if (isGrey(interpretation)) {
        colour = colour.extract_band(0).colourspace(VIPS_INTERPRETATION_B_W);
    } else if (image.get_typeof(VIPS_META_ICC_NAME) || interpretation == VIPS_INTERPRETATION_CMYK) {
        colour = colour.icc_transform("srgb", VImage::option()
                                                  ->set("embedded", true)
                                                  ->set("input_profile", interpretation == VIPS_INTERPRETATION_CMYK ? "cmyk" : "srgb")
                                                  ->set("intent", VIPS_INTENT_RELATIVE));
    } else if (colourBands == 3) {
        colour = colour.colourspace(VIPS_INTERPRETATION_sRGB);
    } else {
        colour = colour.extract_band(0).colourspace(VIPS_INTERPRETATION_B_W);
    }
    colour = colour.cast(VIPS_FORMAT_UCHAR);

    if (alpha) {
        // 16-bit alpha runs to 65535; bring it to the 8-bit range with the colour.
        if (alphaBand.format() == VIPS_FORMAT_USHORT)
            alphaBand = alphaBand / 257.0;
        else if (alphaBand.format() == VIPS_FORMAT_FLOAT || alphaBand.format() == VIPS_FORMAT_DOUBLE)
            alphaBand = alphaBand * (image.interpretation() == VIPS_INTERPRETATION_scRGB ? 255.0 : 1.0);
        colour = colour.bandjoin(alphaBand.cast(VIPS_FORMAT_UCHAR));
    }
    return colour.copy(VImage::option()->set("interpretation", colour.bands() >= 3 ? VIPS_INTERPRETATION_sRGB
                                                                                    : VIPS_INTERPRETATION_B_W));
}

VImage decodeNow(const VImage& image)
{
    // Decoding happens here, not later in the writer, so a damaged file is a read error.
    return image.copy_memory();
}

}  // namespace

VImage loadImage(const QString& path)
{
    startVips();
    try {
        return decodeNow(withoutOrientation(standardised(openHeader(path).autorot())));
    } catch (const vips::VError& error) {
        qCDebug(lcJobs) << "load failed:" << path << error.what();
        throw unreadable();
    } catch (const std::bad_alloc&) {
        throw unreadable();
    }
}

VImage loadImageScaled(const QString& path, QSize size)
{
    startVips();
    try {
        const QSize upright = uprightImageSize(path);
        if (size == upright)
            return loadImage(path);
        VImage image = VImage::thumbnail(encodedPath(path).constData(), std::max(1, size.width()),
                                         VImage::option()
                                             ->set("height", std::max(1, size.height()))
                                             ->set("size", VIPS_SIZE_FORCE)
                                             ->set("fail_on", VIPS_FAIL_ON_TRUNCATED));
        return decodeNow(withoutOrientation(standardised(image)));
    } catch (const vips::VError& error) {
        qCDebug(lcJobs) << "scaled load failed:" << path << error.what();
        throw unreadable();
    } catch (const std::bad_alloc&) {
        throw unreadable();
    }
}

QSize uprightImageSize(const QString& path)
{
    startVips();
    try {
        const VImage image = openHeader(path);
        return swapsSides(image) ? QSize(image.height(), image.width()) : QSize(image.width(), image.height());
    } catch (const vips::VError& error) {
        qCDebug(lcJobs) << "header read failed:" << path << error.what();
        throw unreadable();
    }
}

bool hasAlpha(const VImage& image) { return image.has_alpha(); }

}  // namespace wendrel
