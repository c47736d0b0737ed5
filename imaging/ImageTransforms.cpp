#include "ImageTransforms.h"

#include "AutoEnhance.h"
#include "BackgroundCard.h"
#include "ImageEntries.h"
#include "ImageFormat.h"
#include "ImageWriter.h"
#include "LosslessMetadataRemoval.h"
#include "PixelFunctions.h"
#include "operations/AtomicFile.h"
#include "operations/FileNames.h"
#include "operations/Logging.h"
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
    EntryId id;
    QString title;
    QString symbol;
    QString suffix;
    QString description;
    // The size to decode at, from the upright size, when the transform only scales; decoding
    // straight to a smaller size is far cheaper than decoding everything and then shrinking.
    std::function<QSize(QSize)> decodeSize = {};
    // The pixel work, given the picture and the file it came from (for error messages); none for
    // transforms that only rescale or only re-save.
    std::function<VImage(const VImage&, const QString& path)> apply = {};
    bool mayKeepMetadata = true;
    // Writes the result without decoding and encoding again, when the source allows it.
    std::function<std::optional<QByteArray>(const QString& path, const ImageSource& picture)> lossless = {};
};

// Most pixel functions need only the pixels.
std::function<VImage(const VImage&, const QString&)> pixelsOnly(VImage (*function)(const VImage&))
{
    return [function](const VImage& image, const QString&) { return function(image); };
}

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
std::optional<QByteArray> withoutMetadataLosslessly(const QString& path, const ImageSource& picture)
{
    const ContentType type = ContentType::ofFile(path);
    if ((type != ContentType::jpeg() && type != ContentType::png()) || !picture.isStoredUpright())
        return std::nullopt;
    picture.decode();
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly) || file.size() > (qint64(1) << 31))
        return std::nullopt;
    const QByteArray bytes = file.readAll();
    return type == ContentType::jpeg() ? jpegWithoutMetadata(bytes) : pngWithoutMetadata(bytes);
}

// A pixel function that lets a library error through leaves the picture as it was: the
// transform becomes a plain re-save rather than an error, and no library message reaches the
// user. One that throws OperationError has already said what went wrong, and that stands.
VImage applied(const ImageTransform& transform, const VImage& image, const QString& path)
{
    if (!transform.apply)
        return image;
    try {
        return transform.apply(image, path);
    } catch (const vips::VError& error) {
        qCInfo(lcJobs, "%s left %s as it was: %s", qUtf8Printable(transform.id.toString()), qUtf8Printable(path),
               error.what());
        return image;
    }
}

ProducedFile transformAndSave(const QString& path, const OperationContext& context, const ImageTransform& transform)
{
    const PictureFile picture(path, context);
    const QString saveFailure = imagingText("Couldn't save the image");
    if (transform.lossless) {
        if (const std::optional<QByteArray> bytes = transform.lossless(path, picture.source)) {
            return context.produce(path, outputName(path, transform.suffix, std::nullopt), [&](const QString& destination) {
                writeFileAtomically(destination, *bytes, saveFailure);
            });
        }
    }
    const VImage decoded = transform.decodeSize ? picture.source.decodeScaled(transform.decodeSize(picture.source.uprightSize()))
                                                : picture.source.decode();
    const VImage image = applied(transform, decoded, path);

    const OutputChoice output = outputFor(path, image);
    // The settings file is read once per picture, not once per question.
    const FormatSettings settings = FormatSettings::load();
    const std::optional<double> quality =
        imageTarget(output.format).lossy ? std::optional(std::max(lossyQuality(settings), transformQuality)) : std::nullopt;
    const bool keep = transform.mayKeepMetadata && settings.keepMetadata;
    return context.produce(path, outputName(path, transform.suffix, output.extension), [&](const QString& destination) {
        writeImage(image, output.format, quality, keep ? MetadataPolicy::keep : MetadataPolicy::drop, destination);
    });
}

QList<ImageTransform> transforms()
{
    const auto fit1920 = [](QSize size) { return fittedSize(size, 1920); };
    return {
        {.id = "image.autoEnhance", .title = imagingText("Auto Enhance"),
         .symbol = QStringLiteral("wand.and.stars"), .suffix = imagingText("Enhanced"),
         .description = imagingText("One click: exposure, contrast and colour picked for the photo."),
         .apply = autoEnhanced},
        {.id = "image.half", .title = imagingText("Resize 50%"),
         .symbol = QStringLiteral("arrow.down.forward.and.arrow.up.backward"), .suffix = imagingText("Resized"),
         .description = imagingText("Half the width and height."), .decodeSize = halfSize},
        {.id = "image.fit1920", .title = imagingText("Fit 1920 px"),
         .symbol = QStringLiteral("rectangle.compress.vertical"), .suffix = imagingText("Resized"),
         .description = imagingText("Shrinks so the longest side is at most 1920 px."), .decodeSize = fit1920},
        {.id = "image.rotate", .title = imagingText("Rotate Right"), .symbol = QStringLiteral("rotate.right"),
         .suffix = imagingText("Rotated"), .description = imagingText("Turns 90° clockwise."), .apply = pixelsOnly(rotatedRight)},
        {.id = "image.rotateLeft", .title = imagingText("Rotate Left"),
         .symbol = QStringLiteral("rotate.left"), .suffix = imagingText("Rotated"),
         .description = imagingText("Turns 90° counter-clockwise."), .apply = pixelsOnly(rotatedLeft)},
        {.id = "image.flip", .title = imagingText("Flip"),
         .symbol = QStringLiteral("arrow.left.and.right.righttriangle.left.righttriangle.right"),
         .suffix = imagingText("Flipped"), .description = imagingText("Mirrors left to right."), .apply = pixelsOnly(mirrored)},
        {.id = "image.square", .title = imagingText("Crop Square"), .symbol = QStringLiteral("crop"),
         .suffix = imagingText("Cropped"), .description = imagingText("Crops the centre square."), .apply = pixelsOnly(croppedSquare)},
        {.id = "image.background", .title = imagingText("Add Background"),
         .symbol = QStringLiteral("rectangle.inset.filled"), .suffix = imagingText("Background"),
         .description = imagingText("Puts a screenshot on a gradient with rounded corners and a shadow."),
         .apply = pixelsOnly(onBackgroundCard)},
        {.id = "image.gray", .title = imagingText("Black & White"),
         .symbol = QStringLiteral("circle.lefthalf.filled"), .suffix = imagingText("BW"),
         .description = imagingText("Black-and-white copy."), .apply = pixelsOnly(blackAndWhite)},
        {.id = "image.strip", .title = imagingText("Remove Metadata"), .symbol = QStringLiteral("eye.slash"),
         .suffix = imagingText("Clean"), .description = imagingText("Removes location, camera and other metadata."),
         .mayKeepMetadata = false, .lossless = withoutMetadataLosslessly},
    };
}

}  // namespace

void registerImageTransforms(OperationCatalog& catalog)
{
    for (const ImageTransform& transform : transforms()) {
        catalog.add(Op::make(imageEntry({.id = transform.id, .title = transform.title, .symbol = transform.symbol,
                                         .ring = RingKind::tools, .description = transform.description},
                                        [transform](const QString& path, const OperationContext& context) {
                                            return transformAndSave(path, context, transform);
                                        })));
    }
}

}  // namespace wendrel
