#include "PdfPictureCodec.h"

#include "PlacementGeometry.h"
#include "imaging/ImageWriter.h"
#include "imaging/PixelFunctions.h"
#include "operations/Logging.h"
#include "operations/OperationError.h"

#include <qpdf/Pipeline.hh>

#include <vips/vips8>

#include <array>
#include <cmath>
#include <stdexcept>
#include <string_view>

namespace wendrel {

namespace {

using vips::VImage;

// Larger pictures stay as they are: decoding one would take more memory than a job may hold.
constexpr qint64 largestSamples = 512LL * 1024 * 1024;

// Collects a stream's decoded bytes up to a limit: a stream that decodes to more than its
// dictionary promises is refused before it fills the memory.
class BoundedCollector final : public Pipeline {
public:
    explicit BoundedCollector(qint64 limit) : Pipeline("picture samples", nullptr), m_limit(limit) {}

    void write(unsigned char const* data, size_t length) override
    {
        if (qint64(m_data.size()) + qint64(length) > m_limit)
            throw std::length_error("picture decodes to more than its size");
        m_data.append(reinterpret_cast<const char*>(data), qsizetype(length));
    }
    void finish() override {}

    QByteArray& data() { return m_data; }

private:
    qint64 m_limit;
    QByteArray m_data;
};

// Counts a stream's stored bytes without keeping them.
class ByteCounter final : public Pipeline {
public:
    ByteCounter() : Pipeline("stored size", nullptr) {}
    void write(unsigned char const*, size_t length) override { m_count += qint64(length); }
    void finish() override {}
    qint64 count() const { return m_count; }

private:
    qint64 m_count = 0;
};

// The number of components a colour space gives each pixel, where JPEG can hold them as they
// are: 0 for the rest (indexed, separations, Lab, patterns, anything unknown).
int componentsOf(QPDFObjectHandle space)
{
    if (space.isName()) {
        const std::string name = space.getName();
        if (name == "/DeviceGray" || name == "/G")
            return 1;
        if (name == "/DeviceRGB" || name == "/RGB")
            return 3;
        if (name == "/DeviceCMYK" || name == "/CMYK")
            return 4;
        return 0;
    }
    if (!space.isArray() || space.getArrayNItems() < 2 || !space.getArrayItem(0).isName())
        return 0;
    const std::string family = space.getArrayItem(0).getName();
    if (family == "/CalGray")
        return 1;
    if (family == "/CalRGB")
        return 3;
    if (family == "/ICCBased") {
        QPDFObjectHandle profile = space.getArrayItem(1);
        QPDFObjectHandle count = profile.isStream() ? profile.getDict().getKey("/N") : QPDFObjectHandle();
        const long long components = count.isInteger() ? count.getIntValue() : 0;
        return components == 1 || components == 3 || components == 4 ? int(components) : 0;
    }
    return 0;
}

enum class FilterKind { lossless, jpeg, other };

FilterKind kindOf(const std::string& filter)
{
    static constexpr std::array<std::string_view, 10> lossless{
        "/FlateDecode", "/Fl", "/LZWDecode", "/LZW", "/ASCIIHexDecode",
        "/AHx", "/ASCII85Decode", "/A85", "/RunLengthDecode", "/RL",
    };
    if (filter == "/DCTDecode" || filter == "/DCT")
        return FilterKind::jpeg;
    for (std::string_view name : lossless) {
        if (filter == name)
            return FilterKind::lossless;
    }
    return FilterKind::other;
}

// The stream's filters in order, or nothing when they aren't names.
std::optional<std::vector<FilterKind>> filtersOf(QPDFObjectHandle dictionary)
{
    QPDFObjectHandle filter = dictionary.getKey("/Filter");
    std::vector<QPDFObjectHandle> names;
    if (filter.isArray())
        names = filter.getArrayAsVector();
    else if (!filter.isNull())
        names.push_back(filter);
    std::vector<FilterKind> kinds;
    for (QPDFObjectHandle& name : names) {
        if (!name.isName())
            return std::nullopt;
        kinds.push_back(kindOf(name.getName()));
    }
    return kinds;
}

// A JPEG's own colour transform setting overrides what its markers say; decoders disagree
// on it often enough that such a picture is best left alone.
bool setsColourTransform(QPDFObjectHandle dictionary)
{
    QPDFObjectHandle parameters = dictionary.getKey("/DecodeParms");
    if (parameters.isArray() && parameters.getArrayNItems() > 0)
        parameters = parameters.getArrayItem(parameters.getArrayNItems() - 1);
    return parameters.isDictionary() && parameters.hasKey("/ColorTransform");
}

std::optional<int> positiveInteger(QPDFObjectHandle value)
{
    if (!value.isInteger() || value.getIntValue() <= 0 || value.getIntValue() > 1'000'000)
        return std::nullopt;
    return int(value.getIntValue());
}

qint64 storedSize(QPDFObjectHandle image)
{
    ByteCounter counter;
    image.pipeStreamData(&counter, 0, qpdf_dl_none);
    return counter.count();
}

VipsInterpretation interpretationFor(int components)
{
    switch (components) {
    case 1: return VIPS_INTERPRETATION_B_W;
    case 4: return VIPS_INTERPRETATION_CMYK;
    default: return VIPS_INTERPRETATION_sRGB;
    }
}

VImage asInterpretation(const VImage& image, int components)
{
    return image.copy(VImage::option()->set("interpretation", interpretationFor(components)));
}

// libvips reads a JPEG from memory that it doesn't own; `data` outlives the image's use.
VImage loadJpeg(const QByteArray& data, int shrink)
{
    VipsBlob* blob = vips_blob_new(nullptr, data.constData(), size_t(data.size()));
    try {
        // A damaged JPEG is left as it is rather than stored again with its damage made grey.
        VImage image = VImage::jpegload_buffer(blob, VImage::option()->set("shrink", shrink)->set("fail", true));
        vips_area_unref(VIPS_AREA(blob));
        return image;
    } catch (...) {
        vips_area_unref(VIPS_AREA(blob));
        throw;
    }
}

// The largest JPEG shrink-on-load factor that still leaves at least `target` pixels.
int shrinkOnLoad(QSize full, QSize target)
{
    for (int shrink : {8, 4, 2}) {
        const auto shrunk = [&](int side) { return (side + shrink - 1) / shrink; };
        if (shrunk(full.width()) >= target.width() && shrunk(full.height()) >= target.height())
            return shrink;
    }
    return 1;
}

VImage decodedForLevel(const PictureToEncode& picture, const PdfCompressionLevel& level)
{
    if (picture.source == PictureToEncode::Source::jpeg) {
        const VImage header = loadJpeg(picture.data, 1);
        if (header.bands() != picture.components)
            throw vips::VError("the JPEG's components don't match its colour space");
        const QSize full{header.width(), header.height()};
        const QSize target = downsampledSize(full, picture.placed, level.pixelsPerInch);
        VImage image = asInterpretation(loadJpeg(picture.data, shrinkOnLoad(full, target)), picture.components);
        // Decoding the whole picture here, while `picture.data` is certainly alive, also proves
        // the JPEG whole before anything is made from it.
        return resizedTo(image, target).copy_memory();
    }
    VImage samples = VImage::new_from_memory(const_cast<char*>(picture.data.constData()), size_t(picture.data.size()),
                                             picture.pixels.width(), picture.pixels.height(), picture.components,
                                             VIPS_FORMAT_UCHAR);
    samples = asInterpretation(samples, picture.components);
    // A CMYK JPEG is written the way Photoshop wrote them: inverted, with an Adobe marker that
    // makes JPEG readers invert it back. PDF readers take its samples as stored, so the encoder
    // is given them inverted to store them the right way round.
    if (picture.components == 4)
        samples = asInterpretation(samples.invert(), 4);
    const QSize target = downsampledSize(picture.pixels, picture.placed, level.pixelsPerInch);
    return resizedTo(samples, target).copy_memory();
}

}  // namespace

std::optional<PictureToEncode> pictureToEncode(QPDFObjectHandle image, QSizeF placed)
{
    QPDFObjectHandle dictionary = image.getDict();
    const std::optional<int> width = positiveInteger(dictionary.getKey("/Width"));
    const std::optional<int> height = positiveInteger(dictionary.getKey("/Height"));
    QPDFObjectHandle bits = dictionary.getKey("/BitsPerComponent");
    QPDFObjectHandle stencil = dictionary.getKey("/ImageMask");
    if ((stencil.isBool() && stencil.getBoolValue()) || !width || !height || !bits.isInteger() || bits.getIntValue() != 8
        || dictionary.getKey("/Mask").isArray())
        return std::nullopt;
    const int components = componentsOf(dictionary.getKey("/ColorSpace"));
    const std::optional<std::vector<FilterKind>> filters = filtersOf(dictionary);
    if (components == 0 || !filters)
        return std::nullopt;

    PictureToEncode picture;
    picture.pixels = {*width, *height};
    picture.components = components;
    picture.placed = placed;

    const bool plainJpeg = filters->size() == 1 && filters->front() == FilterKind::jpeg;
    const bool jpegLast = !filters->empty() && filters->back() == FilterKind::jpeg;
    for (std::size_t i = 0; i + (jpegLast ? 1 : 0) < filters->size(); ++i) {
        if ((*filters)[i] != FilterKind::lossless)
            return std::nullopt;
    }
    if (jpegLast && setsColourTransform(dictionary))
        return std::nullopt;

    // JPEGs are decoded later, with shrink-on-load, on the encoding threads; CMYK ones here,
    // so that their samples come out as stored, whatever markers they carry.
    if (plainJpeg && components != 4) {
        std::shared_ptr<Buffer> raw = image.getRawStreamData();
        picture.source = PictureToEncode::Source::jpeg;
        picture.data = QByteArray(reinterpret_cast<const char*>(raw->getBuffer()), qsizetype(raw->getSize()));
        picture.storedBytes = picture.data.size();
        return picture;
    }

    const qint64 expected = qint64(*width) * *height * components;
    if (expected > largestSamples)
        return std::nullopt;
    // Some writers pad the last row; a little more than promised is read and cut off.
    BoundedCollector samples(expected + 4096);
    try {
        if (!image.pipeStreamData(&samples, nullptr, 0, jpegLast ? qpdf_dl_all : qpdf_dl_specialized, true))
            return std::nullopt;
    } catch (const std::exception& error) {
        qCDebug(lcJobs) << "pdf picture not decoded:" << error.what();
        return std::nullopt;
    }
    if (samples.data().size() < expected)
        return std::nullopt;
    samples.data().truncate(qsizetype(expected));
    picture.source = PictureToEncode::Source::samples;
    picture.data = std::move(samples.data());
    picture.storedBytes = storedSize(image);
    return picture;
}

std::optional<EncodedPicture> encodePicture(const PictureToEncode& picture, const PdfCompressionLevel& level)
{
    try {
        const VImage pixels = decodedForLevel(picture, level);
        EncodedPicture encoded{encodeImage(pixels, ImageFormat::jpeg, level.quality, MetadataPolicy::drop),
                               {pixels.width(), pixels.height()}};
        if (encoded.jpeg.size() >= picture.storedBytes)
            return std::nullopt;
        return encoded;
    } catch (const vips::VError& error) {
        qCDebug(lcJobs) << "pdf picture kept, it doesn't decode:" << error.what();
    } catch (const OperationError& error) {
        qCDebug(lcJobs) << "pdf picture kept, it doesn't encode:" << error.message();
    }
    return std::nullopt;
}

void replacePicture(QPDFObjectHandle image, const EncodedPicture& encoded)
{
    image.replaceStreamData(encoded.jpeg.toStdString(), QPDFObjectHandle::newName("/DCTDecode"),
                            QPDFObjectHandle::newNull());
    QPDFObjectHandle dictionary = image.getDict();
    dictionary.replaceKey("/Width", QPDFObjectHandle::newInteger(encoded.pixels.width()));
    dictionary.replaceKey("/Height", QPDFObjectHandle::newInteger(encoded.pixels.height()));
    dictionary.replaceKey("/BitsPerComponent", QPDFObjectHandle::newInteger(8));
}

}  // namespace wendrel
