#include "ImageSource.h"

#include "ExifOrientation.h"
#include "PixelFunctions.h"
#include "PngStructure.h"
#include "VipsRuntime.h"
#include "operations/Logging.h"
#include "operations/OperationError.h"

#include <QCoreApplication>
#include <QFile>

#include <optional>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

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

int orientationOf(const VImage& image)
{
    return image.get_typeof(VIPS_META_ORIENTATION) ? image.get_int(VIPS_META_ORIENTATION) : 1;
}

bool swapsSides(const VImage& image)
{
    const int orientation = orientationOf(image);
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

// Libvips reports progress while it computes a picture; a cancelled job stops it there.
void stopWhenCancelled(VipsImage* image, VipsProgress*, gpointer isCancelled)
{
    if ((*static_cast<const ImageSource::CancelCheck*>(isCancelled))())
        vips_image_set_kill(image, TRUE);
}

}  // namespace

// The open file, read through a libvips source whose every read first asks whether the job
// was cancelled. Formats libvips reads only by file name are opened by name instead.
struct ImageSource::Reader {
    int descriptor = -1;
    const CancelCheck* isCancelled = nullptr;
    std::optional<vips::VSource> source;

    ~Reader()
    {
        if (descriptor >= 0)
            ::close(descriptor);
    }

    bool cancelled() const { return *isCancelled && (*isCancelled)(); }

    static gint64 read(VipsSourceCustom*, void* buffer, gint64 length, Reader* reader)
    {
        return reader->cancelled() ? -1 : ::read(reader->descriptor, buffer, static_cast<size_t>(length));
    }

    static gint64 seek(VipsSourceCustom*, gint64 offset, int whence, Reader* reader)
    {
        return reader->cancelled() ? -1 : ::lseek(reader->descriptor, offset, whence);
    }
};

ImageSource::ImageSource(const QString& path, CancelCheck isCancelled)
    : m_path(path), m_isCancelled(std::move(isCancelled)), m_reader(std::make_unique<Reader>())
{
    startVips();
    m_reader->isCancelled = &m_isCancelled;
    // Not blocking on open: a pipe named like a picture would otherwise wait for a writer.
    m_reader->descriptor = ::open(encodedPath(path).constData(), O_RDONLY | O_CLOEXEC | O_NONBLOCK);
    struct stat status {};
    if (m_reader->descriptor < 0 || ::fstat(m_reader->descriptor, &status) != 0 || !S_ISREG(status.st_mode)) {
        qCDebug(lcJobs) << "not a readable file:" << path;
        throw unreadable();
    }

    QFile file;
    if (file.open(m_reader->descriptor, QIODevice::ReadOnly, QFileDevice::DontCloseHandle)) {
        if (const std::optional<QString> problem = pngStructureProblem(file)) {
            qCDebug(lcJobs) << "refused:" << path << *problem;
            throw unreadable();
        }
    }
    ::lseek(m_reader->descriptor, 0, SEEK_SET);

    try {
        VipsSourceCustom* custom = vips_source_custom_new();
        g_signal_connect(custom, "read", G_CALLBACK(Reader::read), m_reader.get());
        g_signal_connect(custom, "seek", G_CALLBACK(Reader::seek), m_reader.get());
        vips::VSource source(VIPS_SOURCE(custom), vips::STEAL);
        const auto options = [] {
            return VImage::option()->set("access", VIPS_ACCESS_RANDOM)->set("fail_on", VIPS_FAIL_ON_TRUNCATED);
        };
        const bool readsSources = vips_foreign_find_load_source(source.get_source()) != nullptr;
        if (m_reader->cancelled())
            throw OperationCancelled();
        if (readsSources) {
            m_header = VImage::new_from_source(source, "", options());
            m_reader->source = source;
        } else {
            vips_error_clear();
            m_header = VImage::new_from_file(encodedPath(path).constData(), options());
        }
    } catch (const vips::VError& error) {
        if (m_reader->cancelled())
            throw OperationCancelled();
        qCDebug(lcJobs) << "header read failed:" << path << error.what();
        throw unreadable();
    }
    if (qint64(m_header.width()) * m_header.height() > largestPixelCount)
        throw unreadable();
    m_storedUpright = orientationOf(m_header) == 1;
    m_uprightSize = swapsSides(m_header) ? QSize(m_header.height(), m_header.width())
                                         : QSize(m_header.width(), m_header.height());
}

ImageSource::~ImageSource() = default;

template <typename Work>
VImage ImageSource::decoding(const char* what, Work&& work) const
{
    try {
        VImage image = withoutOrientation(standardised(work()));
        if (m_isCancelled) {
            vips_image_set_progress(image.get_image(), TRUE);
            g_signal_connect(image.get_image(), "eval", G_CALLBACK(stopWhenCancelled),
                             const_cast<CancelCheck*>(&m_isCancelled));
        }
        // Decoding happens here, not later in the writer, so a damaged file is a read error.
        return image.copy_memory();
    } catch (const vips::VError& error) {
        if (m_reader->cancelled())
            throw OperationCancelled();
        qCDebug(lcJobs) << what << "failed:" << m_path << error.what();
        throw unreadable();
    } catch (const std::bad_alloc&) {
        throw unreadable();
    }
}

VImage ImageSource::decode() const
{
    return decoding("load", [&] { return m_header.autorot(); });
}

VImage ImageSource::decodeScaled(QSize size) const
{
    if (size == m_uprightSize)
        return decode();
    return decoding("scaled load", [&] {
        const int width = std::max(1, size.width());
        const auto options = VImage::option()
                                 ->set("height", std::max(1, size.height()))
                                 ->set("size", VIPS_SIZE_FORCE)
                                 ->set("fail_on", VIPS_FAIL_ON_TRUNCATED);
        // By name: libvips 8.14 lets a truncated file through a thumbnail made from a source
        // that has no file name. The header was checked when the file was opened.
        return VImage::thumbnail(encodedPath(m_path).constData(), width, options);
    });
}

VImage ImageSource::decodeWithin(int maxDimension) const
{
    return maxDimension < 1 ? decode() : decodeScaled(fittedSize(m_uprightSize, maxDimension));
}

VImage loadImage(const QString& path) { return ImageSource(path).decode(); }

bool hasAlpha(const VImage& image) { return image.has_alpha(); }

}  // namespace wendrel
