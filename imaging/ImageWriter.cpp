#include "ImageWriter.h"

#include "BmpEncoder.h"
#include "WebPEncoder.h"
#include "operations/AtomicFile.h"
#include "operations/Logging.h"
#include "operations/OperationError.h"

#include <QCoreApplication>
#include <QFile>

#include <vips/vips8>

#include <algorithm>
#include <cmath>

namespace wendrel {

namespace {

using vips::VImage;
using vips::VOption;

// AV1 at the encoder's default effort is more than twice as slow as a speed most tools use
// for a similar size; this is that speed (libvips effort = 9 - encoder speed).
constexpr int avifEffort = 3;
// JPEG XL's default effort gains little size for its time on photos.
constexpr int jxlEffort = 5;

OperationError saveError()
{
    return OperationError(QCoreApplication::translate("ImageWriter", "Couldn't save the image"));
}

// A quality means the same fidelity in every format. x265 through libheif reads its scale
// far higher than the others: at the same number a HEIC file comes out three times the size
// of the JPEG and visibly no better. This offset puts HEIC level with JPEG at equal settings.
constexpr int heicQualityOffset = 31;

int qualityPercent(double quality, ImageFormat format)
{
    const int percent = static_cast<int>(std::lround(quality * 100));
    return std::clamp(format == ImageFormat::heic ? percent - heicQualityOffset : percent, 1, 100);
}

// libvips' WebP default when no quality is given.
int webpQuality(std::optional<double> quality) { return quality ? qualityPercent(*quality, ImageFormat::webp) : 75; }

bool needsFlattening(ImageFormat format)
{
    return format == ImageFormat::jpeg || format == ImageFormat::bmp;
}

VOption* saveOptions(ImageFormat format, std::optional<double> quality, MetadataPolicy metadata,
                     PngEffort pngEffort = PngEffort::standard)
{
    VOption* options = VImage::option()->set("strip", metadata == MetadataPolicy::drop);
    const bool lossy = imageTarget(format).lossy && quality.has_value();
    if (lossy)
        options->set("Q", qualityPercent(*quality, format));
    switch (format) {
    case ImageFormat::heic:
        options->set("compression", VIPS_FOREIGN_HEIF_COMPRESSION_HEVC);
        break;
    case ImageFormat::avif:
        options->set("compression", VIPS_FOREIGN_HEIF_COMPRESSION_AV1)->set("effort", avifEffort);
        break;
    case ImageFormat::tiff:
        options->set("compression", VIPS_FOREIGN_TIFF_COMPRESSION_LZW)
            ->set("predictor", VIPS_FOREIGN_TIFF_PREDICTOR_HORIZONTAL);
        break;
    case ImageFormat::jxl:
        options->set("effort", jxlEffort);
        break;
    case ImageFormat::png:
        if (pngEffort == PngEffort::quick)
            options->set("compression", 2)->set("filter", VIPS_FOREIGN_PNG_FILTER_UP);
        break;
    case ImageFormat::jpeg:
    case ImageFormat::webp:
    case ImageFormat::bmp:
    case ImageFormat::gif:
        break;
    }
    return options;
}

void save(const VImage& image, ImageFormat format, VOption* options, const vips::VTarget& target)
{
    switch (format) {
    case ImageFormat::jpeg: image.jpegsave_target(target, options); return;
    case ImageFormat::png: image.pngsave_target(target, options); return;
    case ImageFormat::heic:
    case ImageFormat::avif: image.heifsave_target(target, options); return;
    case ImageFormat::webp: image.webpsave_target(target, options); return;
    case ImageFormat::tiff: image.tiffsave_target(target, options); return;
    case ImageFormat::gif: image.gifsave_target(target, options); return;
    case ImageFormat::jxl: image.jxlsave_target(target, options); return;
    case ImageFormat::bmp: break;
    }
    delete options;
}

// libvips has no BMP writer of its own; Wendrel's is plain 24-bit.
QByteArray encodeAsBmp(const VImage& image)
{
    const VImage rgb = image.bands() >= 3 ? image.extract_band(0, VImage::option()->set("n", 3))
                                          : image.extract_band(0);
    size_t size = 0;
    void* pixels = rgb.write_to_memory(&size);
    const QByteArray bmp = encodeBmp(rgb.width(), rgb.height(), rgb.bands(),
                                     static_cast<const unsigned char*>(pixels));
    g_free(pixels);
    return bmp;
}

QByteArray memoryTargetBytes(const vips::VTarget& target)
{
    VipsBlob* blob = nullptr;
    g_object_get(target.get_target(), "blob", &blob, nullptr);
    if (!blob)
        return {};
    size_t length = 0;
    const void* data = vips_blob_get(blob, &length);
    QByteArray bytes(static_cast<const char*>(data), static_cast<qsizetype>(length));
    vips_area_unref(VIPS_AREA(blob));
    return bytes;
}

// Every field libvips may turn into metadata in a file. Not every saver honours "strip" for
// all of them, so a picture that must go out clean has them taken off as well.
VImage withoutMetadata(const VImage& image)
{
    VImage clean = image.copy();
    char** fields = vips_image_get_fields(clean.get_image());
    for (char** field = fields; *field; ++field) {
        const QByteArray name(*field);
        if (name == VIPS_META_EXIF_NAME || name == VIPS_META_XMP_NAME || name == VIPS_META_IPTC_NAME
            || name == VIPS_META_PHOTOSHOP_NAME || name == VIPS_META_ORIENTATION || name.startsWith("exif-")
            || name.startsWith("png-comment") || name == VIPS_META_IMAGEDESCRIPTION)
            clean.remove(*field);
    }
    g_strfreev(fields);
    return clean;
}

VImage prepared(const VImage& image, ImageFormat format, MetadataPolicy metadata)
{
    const VImage flat = needsFlattening(format) ? flattenOntoWhite(image) : image;
    return metadata == MetadataPolicy::drop ? withoutMetadata(flat) : flat;
}

}  // namespace

VImage flattenOntoWhite(const VImage& image)
{
    if (!image.has_alpha())
        return image;
    const std::vector<double> white(static_cast<size_t>(image.bands() - 1), 255.0);
    return image.flatten(VImage::option()->set("background", white)).cast(VIPS_FORMAT_UCHAR);
}

QByteArray encodeImage(const VImage& image, ImageFormat format, std::optional<double> quality,
                       MetadataPolicy metadata)
{
    try {
        const VImage ready = prepared(image, format, metadata);
        if (format == ImageFormat::bmp) {
            const QByteArray bmp = encodeAsBmp(ready);
            if (bmp.isEmpty())
                throw saveError();
            return bmp;
        }
        if (format == ImageFormat::webp)
            return encodeWebP(ready, webpQuality(quality), metadata == MetadataPolicy::keep);
        const vips::VTarget target = vips::VTarget::new_to_memory();
        save(ready, format, saveOptions(format, quality, metadata), target);
        QByteArray bytes = memoryTargetBytes(target);
        if (bytes.isEmpty())
            throw saveError();
        return bytes;
    } catch (const vips::VError& error) {
        qCDebug(lcJobs) << "encode failed:" << error.what();
        throw saveError();
    }
}

void writeImage(const VImage& image, ImageFormat format, std::optional<double> quality,
                MetadataPolicy metadata, const QString& path, PngEffort pngEffort)
{
    // Both are encoded in memory whole anyway: libvips' WebP saver needs the whole picture too.
    if (format == ImageFormat::bmp || format == ImageFormat::webp) {
        writeFileAtomically(path, encodeImage(image, format, quality, metadata), saveError().message());
        return;
    }
    try {
        const vips::VTarget target = vips::VTarget::new_to_file(QFile::encodeName(path).constData());
        save(prepared(image, format, metadata), format, saveOptions(format, quality, metadata, pngEffort), target);
    } catch (const vips::VError& error) {
        qCDebug(lcJobs) << "save failed:" << path << error.what();
        throw saveError();
    }
}

}  // namespace wendrel
