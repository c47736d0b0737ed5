#include "WebPEncoder.h"

#include "ExifOrientation.h"

#include "operations/Logging.h"
#include "operations/OperationError.h"

#include <QCoreApplication>

#include <vips/vips8>
#include <webp/encode.h>
#include <webp/mux.h>

#include <memory>

namespace wendrel {

namespace {

using vips::VImage;

// libvips' default effort, which is libwebp's "method".
constexpr int effort = 4;

OperationError saveError()
{
    return OperationError(QCoreApplication::translate("ImageWriter", "Couldn't save the image"));
}

struct PictureDeleter {
    void operator()(WebPPicture* picture) const { WebPPictureFree(picture); }
};
struct WriterDeleter {
    void operator()(WebPMemoryWriter* writer) const { WebPMemoryWriterClear(writer); }
};
struct MuxDeleter {
    void operator()(WebPMux* mux) const { WebPMuxDelete(mux); }
};

// A metadata block of the image as libvips read it, or nothing.
QByteArray blob(const VImage& image, const char* field)
{
    if (image.get_typeof(field) == 0)
        return {};
    size_t length = 0;
    const void* data = image.get_blob(field, &length);
    return QByteArray(static_cast<const char*>(data), qsizetype(length));
}

// The colour profile, EXIF and XMP chunks added to an encoded picture, as libvips adds them.
QByteArray withChunks(const QByteArray& encoded, const VImage& image)
{
    const std::pair<const char*, const char*> chunks[] = {
        {"ICCP", VIPS_META_ICC_NAME}, {"EXIF", VIPS_META_EXIF_NAME}, {"XMP ", VIPS_META_XMP_NAME}};
    const WebPData picture{reinterpret_cast<const uint8_t*>(encoded.constData()), size_t(encoded.size())};
    std::unique_ptr<WebPMux, MuxDeleter> mux(WebPMuxCreate(&picture, 0));
    if (!mux)
        throw saveError();
    bool added = false;
    for (const auto& [chunk, field] : chunks) {
        // The pixels are upright already: a tag that says otherwise would turn them again.
        const QByteArray raw = blob(image, field);
        const QByteArray data = qstrcmp(chunk, "EXIF") == 0   ? withoutExifOrientation(raw)
                                : qstrcmp(chunk, "XMP ") == 0 ? withoutXmpOrientation(raw)
                                                              : raw;
        if (data.isEmpty())
            continue;
        const WebPData payload{reinterpret_cast<const uint8_t*>(data.constData()), size_t(data.size())};
        if (WebPMuxSetChunk(mux.get(), chunk, &payload, 1) != WEBP_MUX_OK)
            throw saveError();
        added = true;
    }
    if (!added)
        return encoded;
    WebPData assembled{};
    if (WebPMuxAssemble(mux.get(), &assembled) != WEBP_MUX_OK)
        throw saveError();
    QByteArray result(reinterpret_cast<const char*>(assembled.bytes), qsizetype(assembled.size));
    WebPDataClear(&assembled);
    return result;
}

}  // namespace

QByteArray encodeWebP(const VImage& image, int quality, bool withMetadata)
{
    const bool alpha = image.has_alpha();
    const VImage colour = image.bands() < 3 ? image.colourspace(VIPS_INTERPRETATION_sRGB) : image;
    const VImage pixels = colour.extract_band(0, VImage::option()->set("n", alpha ? 4 : 3)).cast(VIPS_FORMAT_UCHAR);
    size_t size = 0;
    std::unique_ptr<void, decltype(&g_free)> memory(pixels.write_to_memory(&size), g_free);

    WebPConfig config;
    if (!WebPConfigPreset(&config, WEBP_PRESET_DEFAULT, float(quality)))
        throw saveError();
    config.method = effort;
    config.alpha_quality = 100;
    config.thread_level = 1;

    WebPPicture storage;
    if (!WebPPictureInit(&storage))
        throw saveError();
    storage.width = pixels.width();
    storage.height = pixels.height();
    std::unique_ptr<WebPPicture, PictureDeleter> picture(&storage);
    const auto* rgb = static_cast<const uint8_t*>(memory.get());
    const int stride = pixels.width() * pixels.bands();
    if (!(alpha ? WebPPictureImportRGBA(picture.get(), rgb, stride) : WebPPictureImportRGB(picture.get(), rgb, stride)))
        throw saveError();
    memory.reset();  // libwebp holds its own copy in YUV now

    WebPMemoryWriter writerStorage;
    WebPMemoryWriterInit(&writerStorage);
    std::unique_ptr<WebPMemoryWriter, WriterDeleter> writer(&writerStorage);
    picture->writer = WebPMemoryWrite;
    picture->custom_ptr = writer.get();
    if (!WebPEncode(&config, picture.get())) {
        qCDebug(lcJobs, "WebP encoder refused the picture: error %d", int(picture->error_code));
        throw saveError();
    }
    const QByteArray encoded(reinterpret_cast<const char*>(writer->mem), qsizetype(writer->size));
    return withMetadata ? withChunks(encoded, image) : encoded;
}

}  // namespace wendrel
