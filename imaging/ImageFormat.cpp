#include "ImageFormat.h"

#include "EncoderProbe.h"
#include "operations/settings/FormatSettings.h"

#include <QCoreApplication>

namespace wendrel {

const QList<ImageTarget>& imageTargets()
{
    static const QList<ImageTarget> targets{
        {ImageFormat::jpeg, QStringLiteral("JPG"), QStringLiteral("jpg"), true},
        {ImageFormat::png, QStringLiteral("PNG"), QStringLiteral("png"), false},
        {ImageFormat::heic, QStringLiteral("HEIC"), QStringLiteral("heic"), true},
        {ImageFormat::webp, QStringLiteral("WebP"), QStringLiteral("webp"), true},
        {ImageFormat::avif, QStringLiteral("AVIF"), QStringLiteral("avif"), true},
        {ImageFormat::tiff, QStringLiteral("TIFF"), QStringLiteral("tiff"), false},
        {ImageFormat::bmp, QStringLiteral("BMP"), QStringLiteral("bmp"), false},
        {ImageFormat::gif, QStringLiteral("GIF"), QStringLiteral("gif"), false},
        {ImageFormat::jxl, QStringLiteral("JXL"), QStringLiteral("jxl"), true},
    };
    return targets;
}

const ImageTarget& imageTarget(ImageFormat format)
{
    for (const ImageTarget& target : imageTargets()) {
        if (target.format == format)
            return target;
    }
    return imageTargets().front();
}

ContentType contentType(ImageFormat format)
{
    switch (format) {
    case ImageFormat::jpeg: return ContentType::jpeg();
    case ImageFormat::png: return ContentType::png();
    case ImageFormat::heic: return ContentType::heic();
    case ImageFormat::webp: return ContentType::webp();
    case ImageFormat::avif: return ContentType::avif();
    case ImageFormat::tiff: return ContentType::tiff();
    case ImageFormat::bmp: return ContentType::bmp();
    case ImageFormat::gif: return ContentType::gif();
    case ImageFormat::jxl: return ContentType::jpegXl();
    }
    return ContentType::jpeg();
}

std::optional<ImageFormat> imageFormatFor(const ContentType& type)
{
    for (const ImageTarget& target : imageTargets()) {
        if (contentType(target.format) == type)
            return target.format;
    }
    return std::nullopt;
}

bool canWrite(ImageFormat format)
{
    // Probing encodes a picture in every format, and HEIC and AVIF encoders take their time:
    // the answer is kept across runs for as long as the libraries stay the same.
    static const QList<ImageFormat> writable =
        cachedOrProbed(encoderCachePath(), encoderLibraryStamp(), probeWritableFormats);
    return writable.contains(format);
}

double lossyQuality(const FormatSettings& settings)
{
    switch (settings.imageQuality) {
    case FormatSettings::ImageQuality::smaller: return 0.72;
    case FormatSettings::ImageQuality::balanced: return 0.86;
    case FormatSettings::ImageQuality::higher: return 0.95;
    }
    return 0.86;
}

}  // namespace wendrel
