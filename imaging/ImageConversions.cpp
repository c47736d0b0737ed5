#include "ImageConversions.h"

#include "IcoFile.h"
#include "ImageEntries.h"
#include "ImageMemoryBudget.h"
#include "ImageFormat.h"
#include "ImageLoader.h"
#include "ImageWriter.h"
#include "PixelFunctions.h"
#include "pdf/ImagesToPdf.h"
#include "operations/AtomicFile.h"
#include "operations/FileNames.h"
#include "operations/OperationCatalog.h"
#include "operations/OperationError.h"
#include "operations/settings/FormatSettings.h"


namespace wendrel {

namespace {

using vips::VImage;

// Loads a picture within the user's size limit, shrinking while decoding where possible.
VImage loadWithinLimit(const QString& path, int maxDimension)
{
    if (maxDimension < 1)
        return loadImage(path);
    return loadImageScaled(path, fittedSize(uprightImageSize(path), maxDimension));
}

OperationOutcome convertImages(const QStringList& paths, const OperationContext& context, const ImageTarget& target)
{
    QList<ProducedFile> produced;
    for (const QString& path : paths) {
        context.throwIfCancelled();
        // Very large pictures wait their turn rather than all be held in memory at once.
        const ImageMemoryBudget::Reservation memory = ImageMemoryBudget::forFile(path);
        const FormatSettings settings = FormatSettings::load();
        const VImage image = loadWithinLimit(path, settings.imageMaxDimension);
        const QString name = outputName(path, std::nullopt, target.extension);
        const QString destination = context.outputUrl(name);
        // The user's quality setting decides for every lossy format alike.
        const std::optional<double> quality = target.lossy ? std::optional(lossyQuality(settings)) : std::nullopt;
        writeImage(image, target.format, quality,
                   settings.keepMetadata ? MetadataPolicy::keep : MetadataPolicy::drop, destination);
        produced.append({destination, name, path});
    }
    return OperationOutcome::files(produced);
}

void writeBytes(const QString& path, const QByteArray& bytes, const char* failure)
{
    if (!writeFileAtomically(path, bytes).isEmpty())
        throw OperationError(imagingText(failure));
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

OperationOutcome makeIcons(const QStringList& paths, const OperationContext& context)
{
    QList<ProducedFile> produced;
    for (const QString& path : paths) {
        context.throwIfCancelled();
        // Very large pictures wait their turn rather than all be held in memory at once.
        const ImageMemoryBudget::Reservation memory = ImageMemoryBudget::forFile(path);
        const VImage picture = loadImage(path);
        QByteArray icon;
        try {
            icon = iconFor(picture);
        } catch (const std::exception&) {
            throw OperationError(imagingText("Couldn't create the icon"));
        }
        const QString name = outputName(path, std::nullopt, QStringLiteral("ico"));
        const QString destination = context.outputUrl(name);
        writeBytes(destination, icon, "Couldn't create the icon");
        produced.append({destination, name, path});
    }
    return OperationOutcome::files(produced);
}

OperationOutcome makePdf(const QStringList& paths, const OperationContext& context)
{
    QList<PdfPicture> pictures;
    for (qsizetype index = 0; index < paths.size(); ++index) {
        context.throwIfCancelled();
        pictures.append(pdfPictureFromFile(paths[index]));
        context.progress(double(index + 1) / double(paths.size() + 1));
    }
    const QString name = outputName(paths.value(0), std::nullopt, QStringLiteral("pdf"));
    const QString destination = context.outputUrl(name);
    writePicturesPdf(pictures, destination);
    return OperationOutcome::files({{destination, name, paths.value(0)}});
}

}  // namespace

void registerImageConversions(OperationCatalog& catalog)
{
    for (const ImageTarget& target : imageTargets()) {
        if (!canWrite(target.format))
            continue;
        const QString description = target.format == ImageFormat::jxl
                                        ? imagingText("JPEG XL: the size of WebP and AVIF at JPEG's speed.")
                                        : imagingText("Converts to %1.").arg(target.name);
        catalog.add(Op::make(imageEntry(
            QStringLiteral("image.") + target.extension, target.name, QStringLiteral("photo"), RingKind::convert,
            description,
            [target](const QStringList& paths, const OperationContext& context) {
                return convertImages(paths, context, target);
            },
            contentType(target.format))));
    }

    catalog.add(Op::make(imageEntry(QStringLiteral("image.ico"), QStringLiteral("ICO"), QStringLiteral("app.dashed"),
                                    RingKind::convert,
                                    imagingText("Windows icon with every size from 16 to 256 px."), makeIcons)));

    Op::Definition pdf = imageEntry(QStringLiteral("image.pdf"), QStringLiteral("PDF"), QStringLiteral("doc.richtext"),
                                    RingKind::convert,
                                    imagingText("One PDF from all dropped images, a page per image."), makePdf);
    pdf.combinesInputs = true;
    catalog.add(Op::make(std::move(pdf)));
}

}  // namespace wendrel
