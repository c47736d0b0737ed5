#include "ImageTransforms.h"

#include "AutoEnhance.h"
#include "BackgroundCard.h"
#include "ImageEntries.h"
#include "ImageFormat.h"
#include "ImageLoader.h"
#include "ImageWriter.h"
#include "PixelFunctions.h"
#include "operations/FileNames.h"
#include "operations/OperationCatalog.h"
#include "operations/settings/FormatSettings.h"

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
    std::function<QSize(QSize)> decodeSize;
    // The pixel work; none for transforms that only rescale or only re-save.
    std::function<VImage(const VImage&)> apply;
    bool mayKeepMetadata = true;
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

OperationOutcome transformAndSave(const QStringList& paths, const OperationContext& context,
                                  const ImageTransform& transform)
{
    QList<ProducedFile> produced;
    for (const QString& path : paths) {
        context.throwIfCancelled();
        VImage image = transform.decodeSize ? loadImageScaled(path, transform.decodeSize(uprightImageSize(path)))
                                            : loadImage(path);
        if (transform.apply)
            image = transform.apply(image);

        const OutputChoice output = outputFor(path, image);
        const QString name = outputName(path, transform.suffix, output.extension);
        const QString destination = context.outputUrl(name);
        const std::optional<double> quality =
            imageTarget(output.format).lossy ? std::optional(std::max(lossyQuality(), transformQuality))
                                             : std::nullopt;
        const bool keep = transform.mayKeepMetadata && FormatSettings::load().keepMetadata;
        writeImage(image, output.format, quality, keep ? MetadataPolicy::keep : MetadataPolicy::drop, destination);
        produced.append({destination, name, path});
    }
    return OperationOutcome::files(produced);
}

QList<ImageTransform> transforms()
{
    return {
        {QStringLiteral("image.autoEnhance"), imagingText("Auto Enhance"), QStringLiteral("wand.and.stars"),
         imagingText("Enhanced"), imagingText("One click: exposure, contrast and colour picked for the photo."),
         {}, autoEnhanced},
        {QStringLiteral("image.half"), imagingText("Resize 50%"),
         QStringLiteral("arrow.down.forward.and.arrow.up.backward"), imagingText("Resized"),
         imagingText("Half the width and height."), halfSize, {}},
        {QStringLiteral("image.fit1920"), imagingText("Fit 1920 px"), QStringLiteral("rectangle.compress.vertical"),
         imagingText("Resized"), imagingText("Shrinks so the longest side is at most 1920 px."),
         [](QSize size) { return fittedSize(size, 1920); }, {}},
        {QStringLiteral("image.rotate"), imagingText("Rotate Right"), QStringLiteral("rotate.right"),
         imagingText("Rotated"), imagingText("Turns 90° clockwise."), {}, rotatedRight},
        {QStringLiteral("image.rotateLeft"), imagingText("Rotate Left"), QStringLiteral("rotate.left"),
         imagingText("Rotated"), imagingText("Turns 90° counter-clockwise."), {}, rotatedLeft},
        {QStringLiteral("image.flip"), imagingText("Flip"),
         QStringLiteral("arrow.left.and.right.righttriangle.left.righttriangle.right"), imagingText("Flipped"),
         imagingText("Mirrors left to right."), {}, mirrored},
        {QStringLiteral("image.square"), imagingText("Crop Square"), QStringLiteral("crop"), imagingText("Cropped"),
         imagingText("Crops the centre square."), {}, croppedSquare},
        {QStringLiteral("image.background"), imagingText("Add Background"), QStringLiteral("rectangle.inset.filled"),
         imagingText("Background"), imagingText("Puts a screenshot on a gradient with rounded corners and a shadow."),
         {}, onBackgroundCard},
        {QStringLiteral("image.gray"), imagingText("Black & White"), QStringLiteral("circle.lefthalf.filled"),
         imagingText("BW"), imagingText("Black-and-white copy."), {}, blackAndWhite},
        {QStringLiteral("image.strip"), imagingText("Remove Metadata"), QStringLiteral("eye.slash"),
         imagingText("Clean"), imagingText("Removes location, camera and other metadata."), {}, {}, false},
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
