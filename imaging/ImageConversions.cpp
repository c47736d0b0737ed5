#include "ImageConversions.h"

#include "IcoFile.h"
#include "ImageEntries.h"
#include "ImageFormat.h"
#include "ImageWriter.h"
#include "PixelFunctions.h"
#include "pdf/ImagesToPdf.h"
#include "operations/AtomicFile.h"
#include "operations/FileNames.h"
#include "operations/Logging.h"
#include "operations/OperationCatalog.h"
#include "operations/OperationError.h"
#include "operations/settings/FormatSettings.h"

namespace wendrel {

namespace {

using vips::VImage;

// Each target's entry, so the ring order knows every one by name.
EntryId conversionId(ImageFormat format)
{
    switch (format) {
    case ImageFormat::jpeg: return "image.jpg";
    case ImageFormat::png: return "image.png";
    case ImageFormat::heic: return "image.heic";
    case ImageFormat::webp: return "image.webp";
    case ImageFormat::avif: return "image.avif";
    case ImageFormat::tiff: return "image.tiff";
    case ImageFormat::bmp: return "image.bmp";
    case ImageFormat::gif: return "image.gif";
    case ImageFormat::jxl: return "image.jxl";
    }
    Q_UNREACHABLE();
}

ProducedFile convertImage(const QString& path, const OperationContext& context, const ImageTarget& target)
{
    const PictureFile picture(path, context);
    // The settings file is read once per picture, not once per question.
    const FormatSettings settings = FormatSettings::load();
    const VImage image = picture.source.decodeWithin(settings.imageMaxDimension);
    // The user's quality setting decides for every lossy format alike.
    const std::optional<double> quality = target.lossy ? std::optional(lossyQuality(settings)) : std::nullopt;
    return context.produce(path, outputName(path, std::nullopt, target.extension), [&](const QString& destination) {
        writeImage(image, target.format, quality, settings.keepMetadata ? MetadataPolicy::keep : MetadataPolicy::drop,
                   destination);
    });
}

// Every size from 16 to 256 pixels. A picture that is not square keeps its proportions,
// centred on a transparent square, rather than being stretched.
QByteArray iconFor(const VImage& picture)
{
    const VImage withAlpha = picture.has_alpha() ? picture : picture.bandjoin_const({255});
    QList<IconImage> images;
    for (int side : iconSizes) {
        const QSize fitted = fittedSize({withAlpha.width(), withAlpha.height()}, side);
        QSize scaled = fitted;
        if (std::max(fitted.width(), fitted.height()) < side) {  // small pictures grow to fill
            const double scale = double(side) / std::max(withAlpha.width(), withAlpha.height());
            scaled = {std::max(1, int(std::lround(withAlpha.width() * scale))),
                      std::max(1, int(std::lround(withAlpha.height() * scale)))};
        }
        const VImage square = resizedTo(withAlpha, scaled)
                                  .embed((side - scaled.width()) / 2, (side - scaled.height()) / 2, side, side);
        images.append({side, encodeImage(square, ImageFormat::png, std::nullopt, MetadataPolicy::drop)});
    }
    return buildIcoFile(images);
}

ProducedFile makeIcon(const QString& path, const OperationContext& context)
{
    const PictureFile picture(path, context);
    const VImage image = picture.source.decode();
    const QString failure = imagingText("Couldn't create the icon");
    QByteArray icon;
    try {
        icon = iconFor(image);
    } catch (const std::exception& error) {
        qCDebug(lcJobs) << "icon failed:" << path << error.what();
        throw OperationError(failure);
    }
    return context.produce(path, outputName(path, std::nullopt, QStringLiteral("ico")),
                           [&](const QString& destination) { writeFileAtomically(destination, icon, failure); });
}

OperationOutcome makePdf(const QStringList& paths, const OperationContext& context)
{
    QList<PdfPicture> pictures;
    for (qsizetype index = 0; index < paths.size(); ++index) {
        context.throwIfCancelled();
        pictures.append(pdfPictureFromFile(paths[index], context));
        context.progress(double(index + 1) / double(paths.size() + 1));
    }
    const QString name = outputName(paths.value(0), std::nullopt, QStringLiteral("pdf"));
    return OperationOutcome::files({context.produce(paths.value(0), name, [&](const QString& destination) {
        writePicturesPdf(pictures, destination);
    })});
}

}  // namespace

void registerImageConversions(OperationCatalog& catalog)
{
    for (const ImageTarget& target : imageTargets()) {
        const QString description = target.format == ImageFormat::jxl
                                        ? imagingText("JPEG XL: the size of WebP and AVIF at JPEG's speed.")
                                        : imagingText("Converts to %1.").arg(target.name);
        Op::Definition conversion = imageEntry(
            {.id = conversionId(target.format), .title = target.name, .symbol = QStringLiteral("photo"),
             .ring = RingKind::convert, .description = description},
            [target](const QString& path, const OperationContext& context) {
                return convertImage(path, context, target);
            },
            contentType(target.format));
        // Probing the encoders starts libvips: only once a picture is in hand, so listing help
        // or converting subtitles never does.
        conversion.available = [format = target.format] { return canWrite(format); };
        catalog.add(Op::make(std::move(conversion)));
    }

    catalog.add(Op::make(imageEntry({.id = "image.ico", .title = QStringLiteral("ICO"),
                                     .symbol = QStringLiteral("app.dashed"), .ring = RingKind::convert,
                                     .description = imagingText("Windows icon with every size from 16 to 256 px.")},
                                    makeIcon)));

    catalog.add(Op::make({
        .entry = {.id = "image.pdf", .title = QStringLiteral("PDF"), .symbol = QStringLiteral("doc.richtext"),
                  .ring = RingKind::convert, .inputs = {ContentType::image()}, .excludes = nonRasterImages(),
                  .description = imagingText("One PDF from all dropped images, a page per image.")},
        .combined = makePdf,
    }));
}

}  // namespace wendrel
