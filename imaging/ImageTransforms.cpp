#include "ImageTransforms.h"

#include "AutoEnhance.h"
#include "BackgroundCard.h"
#include "ImageEntries.h"
#include "ImageMemoryBudget.h"
#include "ImageFormat.h"
#include "ImageLoader.h"
#include "ImageWriter.h"
#include "LosslessMetadataRemoval.h"
#include "PixelFunctions.h"
#include "operations/AtomicFile.h"
#include "operations/FileNames.h"
#include "operations/OperationCatalog.h"
#include "operations/OperationError.h"
#include "operations/settings/FormatSettings.h"

#include <QFile>

#include <algorithm>
#include <functional>

namespace wendrel {

namespace {

using vips::VImage;

// A transform never visibly degrades a photo: lossy results are written at this quality or
// better, whatever the quality setting says.
constexpr double transformQuality = 0.9;

struct ImageTransform {
    QString id;
    QString title;
    QString symbol;
    QString suffix;
    QString description;
    // The size to decode at, from the upright size, when the transform only scales; decoding
    // straight to a smaller size is far cheaper than decoding everything and then shrinking.
    std::function<QSize(QSize)> decodeSize = {};
    // The pixel work; none for transforms that only rescale or only re-save.
    std::function<VImage(const VImage&)> apply = {};
    bool mayKeepMetadata = true;
    // Writes the result without decoding and encoding again, when the source allows it.
    std::function<std::optional<QByteArray>(const QString& source)> lossless = {};
};

struct OutputChoice {
    ImageFormat format;
    QString extension;
};

// The source's own format and extension where Wendrel can write it — except GIF, whose single
// frame would lose an animation — otherwise JPEG, or PNG for pictures with transparency.
OutputChoice outputFor(const QString& source, const VImage& result)
{
    const QString extension = splitExtension(lastPathComponent(source)).extension;
    const std::optional<ImageFormat> own = imageFormatFor(ContentType::fromExtension(extension));
    if (own && *own != ImageFormat::gif && canWrite(*own))
        return {*own, extension};
    if (result.has_alpha())
        return {ImageFormat::png, QStringLiteral("png")};
    return {ImageFormat::jpeg, QStringLiteral("jpg")};
}

// Removing metadata from a JPEG or a PNG needs no new encoding: the pixels stay exactly as they
// were. Only files already upright qualify, since dropping the orientation of one that is not
// would turn its picture; and the file must decode, so a damaged one is reported, not copied.
std::optional<QByteArray> withoutMetadataLosslessly(const QString& source)
{
    const ContentType type = ContentType::ofFile(source);
    if (type != ContentType::jpeg() && type != ContentType::png())
        return std::nullopt;
    loadImage(source);
    try {
        const VImage header = VImage::new_from_file(QFile::encodeName(source).constData());
        if (header.get_typeof(VIPS_META_ORIENTATION) && header.get_int(VIPS_META_ORIENTATION) != 1)
            return std::nullopt;
    } catch (const vips::VError&) {
        return std::nullopt;
    }
    QFile file(source);
    if (!file.open(QIODevice::ReadOnly) || file.size() > (qint64(1) << 31))
        return std::nullopt;
    const QByteArray bytes = file.readAll();
    return type == ContentType::jpeg() ? jpegWithoutMetadata(bytes) : pngWithoutMetadata(bytes);
}

OperationOutcome transformAndSave(const QStringList& paths, const OperationContext& context,
                                  const ImageTransform& transform)
{
    QList<ProducedFile> produced;
    for (const QString& path : paths) {
        context.throwIfCancelled();
        // Very large pictures wait their turn rather than all be held in memory at once.
        const ImageMemoryBudget::Reservation memory = ImageMemoryBudget::forFile(path);
        if (transform.lossless) {
            if (const std::optional<QByteArray> bytes = transform.lossless(path)) {
                const QString name = outputName(path, transform.suffix, std::nullopt);
                const QString destination = context.outputUrl(name);
                if (!writeFileAtomically(destination, *bytes).isEmpty())
                    throw OperationError(imagingText("Couldn't save the image"));
                produced.append({destination, name, path});
                continue;
            }
        }
        VImage image = transform.decodeSize ? loadImageScaled(path, transform.decodeSize(uprightImageSize(path)))
                                            : loadImage(path);
        if (transform.apply)
            image = transform.apply(image);

        const OutputChoice output = outputFor(path, image);
        const QString name = outputName(path, transform.suffix, output.extension);
        const QString destination = context.outputUrl(name);
        // The settings file is read once per picture, not once per question.
        const FormatSettings settings = FormatSettings::load();
        const std::optional<double> quality =
            imageTarget(output.format).lossy ? std::optional(std::max(lossyQuality(settings), transformQuality))
                                             : std::nullopt;
        const bool keep = transform.mayKeepMetadata && settings.keepMetadata;
        writeImage(image, output.format, quality, keep ? MetadataPolicy::keep : MetadataPolicy::drop, destination);
        produced.append({destination, name, path});
    }
    return OperationOutcome::files(produced);
}

QList<ImageTransform> transforms()
{
    const auto fit1920 = [](QSize size) { return fittedSize(size, 1920); };
    return {
        {.id = QStringLiteral("image.autoEnhance"), .title = imagingText("Auto Enhance"),
         .symbol = QStringLiteral("wand.and.stars"), .suffix = imagingText("Enhanced"),
         .description = imagingText("One click: exposure, contrast and colour picked for the photo."),
         .apply = autoEnhanced},
        {.id = QStringLiteral("image.half"), .title = imagingText("Resize 50%"),
         .symbol = QStringLiteral("arrow.down.forward.and.arrow.up.backward"), .suffix = imagingText("Resized"),
         .description = imagingText("Half the width and height."), .decodeSize = halfSize},
        {.id = QStringLiteral("image.fit1920"), .title = imagingText("Fit 1920 px"),
         .symbol = QStringLiteral("rectangle.compress.vertical"), .suffix = imagingText("Resized"),
         .description = imagingText("Shrinks so the longest side is at most 1920 px."), .decodeSize = fit1920},
        {.id = QStringLiteral("image.rotate"), .title = imagingText("Rotate Right"), .symbol = QStringLiteral("rotate.right"),
         .suffix = imagingText("Rotated"), .description = imagingText("Turns 90° clockwise."), .apply = rotatedRight},
        {.id = QStringLiteral("image.rotateLeft"), .title = imagingText("Rotate Left"),
         .symbol = QStringLiteral("rotate.left"), .suffix = imagingText("Rotated"),
         .description = imagingText("Turns 90° counter-clockwise."), .apply = rotatedLeft},
        {.id = QStringLiteral("image.flip"), .title = imagingText("Flip"),
         .symbol = QStringLiteral("arrow.left.and.right.righttriangle.left.righttriangle.right"),
         .suffix = imagingText("Flipped"), .description = imagingText("Mirrors left to right."), .apply = mirrored},
        {.id = QStringLiteral("image.square"), .title = imagingText("Crop Square"), .symbol = QStringLiteral("crop"),
         .suffix = imagingText("Cropped"), .description = imagingText("Crops the centre square."), .apply = croppedSquare},
        {.id = QStringLiteral("image.background"), .title = imagingText("Add Background"),
         .symbol = QStringLiteral("rectangle.inset.filled"), .suffix = imagingText("Background"),
         .description = imagingText("Puts a screenshot on a gradient with rounded corners and a shadow."),
         .apply = onBackgroundCard},
        {.id = QStringLiteral("image.gray"), .title = imagingText("Black & White"),
         .symbol = QStringLiteral("circle.lefthalf.filled"), .suffix = imagingText("BW"),
         .description = imagingText("Black-and-white copy."), .apply = blackAndWhite},
        {.id = QStringLiteral("image.strip"), .title = imagingText("Remove Metadata"), .symbol = QStringLiteral("eye.slash"),
         .suffix = imagingText("Clean"), .description = imagingText("Removes location, camera and other metadata."),
         .mayKeepMetadata = false, .lossless = withoutMetadataLosslessly},
    };
}

}  // namespace

void registerImageTransforms(OperationCatalog& catalog)
{
    for (const ImageTransform& transform : transforms()) {
        catalog.add(Op::make(imageEntry(transform.id, transform.title, transform.symbol, RingKind::tools,
                                        transform.description,
                                        [transform](const QStringList& paths, const OperationContext& context) {
                                            return transformAndSave(paths, context, transform);
                                        })));
    }
}

}  // namespace wendrel
