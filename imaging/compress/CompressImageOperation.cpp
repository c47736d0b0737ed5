#include "CompressImageOperation.h"

#include "CompressionSearch.h"
#include "CompressionSettingsView.h"
#include "imaging/ImageEntries.h"
#include "imaging/ImageFormat.h"
#include "imaging/ImageWriter.h"
#include "imaging/PixelFunctions.h"
#include "operations/AtomicFile.h"
#include "operations/FileNames.h"
#include "operations/Logging.h"
#include "operations/OperationCatalog.h"
#include "operations/OperationError.h"
#include "operations/prompt/SettingsPrompt.h"

#include <QFileInfo>

namespace wendrel {

namespace {

using vips::VImage;

OperationError couldNotSave() { return OperationError(imagingText("Couldn't save the image")); }

// Compressed pictures never carry the source's metadata.
std::optional<QByteArray> encodeOnce(const VImage& image, ImageFormat format, double quality)
{
    try {
        return encodeImage(image, format, quality, MetadataPolicy::drop);
    } catch (const OperationError&) {
        return std::nullopt;
    }
}

QByteArray compress(VImage image, const CompressionSettings& settings, qint64 inputBytes, ImageFormat format)
{
    if (settings.maxDimension >= 1)
        image = resizedTo(image, fittedSize({image.width(), image.height()}, settings.maxDimension));

    const std::optional<qint64> target = compressionTarget(settings, inputBytes);
    if (!target) {
        std::optional<QByteArray> bytes = encodeOnce(image, format, qualityModeQuality(settings.qualityPercent));
        if (!bytes)
            throw couldNotSave();
        return *bytes;
    }

    SearchablePicture picture{
        [&](double quality) { return encodeOnce(image, format, quality); },
        [&] {
            image = resizedTo(image, {std::max(1, int(0.75 * image.width())), std::max(1, int(0.75 * image.height()))});
        },
    };
    const std::optional<CompressionResult> result = searchForSize(picture, *target);
    if (!result)
        throw couldNotSave();
    qCInfo(lcJobs, "compression search: %d encodes, %d shrinks, quality %.3f, %lld bytes (target %lld)",
           result->encodes, result->shrinks, result->quality, static_cast<long long>(result->bytes.size()),
           static_cast<long long>(*target));
    return result->bytes;
}

ProducedFile compressImage(const QString& path, const OperationContext& context)
{
    // What the user confirmed for this job; the stored settings when nobody was asked.
    const CompressionSettings settings = settingsForJob<CompressionSettings>(context);
    const bool heic = settings.format == CompressionSettings::Format::heic;
    const ImageFormat format = heic ? ImageFormat::heic : ImageFormat::jpeg;
    if (!canWrite(format))
        throw OperationError(imagingText("This format can't be written on this computer"));

    const PictureFile picture(path, context);
    const qint64 inputBytes = QFileInfo(path).size();
    QByteArray bytes;
    try {
        bytes = compress(picture.source.decode(), settings, inputBytes, format);
    } catch (const vips::VError& error) {
        qCDebug(lcJobs) << "compression failed:" << path << error.what();
        throw couldNotSave();
    }
    qCInfo(lcJobs, "compressed %ld → %ld bytes", static_cast<long>(inputBytes), static_cast<long>(bytes.size()));
    return context.produce(path, outputName(path, imagingText("Compressed"), heic ? QStringLiteral("heic") : QStringLiteral("jpg")),
                           [&](const QString& destination) {
                               writeFileAtomically(destination, bytes, couldNotSave().message());
                           });
}

}  // namespace

void registerCompressImageOperation(OperationCatalog& catalog)
{
    Op::Definition entry = imageEntry(
        {.id = "image.compress", .title = imagingText("Compress"), .symbol = QStringLiteral("arrow.down.right.and.arrow.up.left"),
         .ring = RingKind::tools,
         .description = imagingText("Asks for a target: a file size, a percentage or a quality, plus an optional size limit "
                                    "and JPEG or HEIC.")},
        compressImage);
    entry.prompt = settingsPrompt<CompressionSettings>(compressionSettingsView);
    catalog.add(Op::make(std::move(entry)));
}

}  // namespace wendrel
