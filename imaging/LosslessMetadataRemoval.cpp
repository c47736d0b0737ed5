#include "LosslessMetadataRemoval.h"

#include <QList>
#include <QtEndian>

namespace wendrel {

namespace {

constexpr unsigned char markerStart = 0xFF;
constexpr unsigned char startOfImage = 0xD8;
constexpr unsigned char endOfImage = 0xD9;
constexpr unsigned char startOfScan = 0xDA;
constexpr unsigned char app0 = 0xE0;
constexpr unsigned char app2 = 0xE2;
constexpr unsigned char app14 = 0xEE;
constexpr unsigned char app15 = 0xEF;
constexpr unsigned char comment = 0xFE;

bool isRestart(unsigned char marker) { return marker >= 0xD0 && marker <= 0xD7; }

// Application blocks that carry metadata are dropped, except the ones that say how to decode
// colours: JFIF (APP0), the ICC profile (APP2 "ICC_PROFILE") and Adobe's (APP14).
bool keepsSegment(unsigned char marker, const char* payload, qsizetype length)
{
    if (marker == comment)
        return false;
    if (marker < app0 || marker > app15)
        return true;
    if (marker == app0 || marker == app14)
        return true;
    return marker == app2 && length >= 12 && QByteArray::fromRawData(payload, 12) == QByteArray("ICC_PROFILE\0", 12);
}

}  // namespace

std::optional<QByteArray> jpegWithoutMetadata(const QByteArray& jpeg)
{
    const auto* bytes = reinterpret_cast<const unsigned char*>(jpeg.constData());
    const qsizetype size = jpeg.size();
    if (size < 4 || bytes[0] != markerStart || bytes[1] != startOfImage)
        return std::nullopt;

    QByteArray out;
    out.reserve(size);
    out.append(jpeg.constData(), 2);
    qsizetype at = 2;
    while (at < size) {
        // Between segments: a marker, possibly after fill bytes.
        if (bytes[at] != markerStart)
            return std::nullopt;
        while (at < size && bytes[at] == markerStart)
            ++at;
        if (at >= size)
            return std::nullopt;
        const unsigned char marker = bytes[at++];
        if (marker == endOfImage) {
            out.append(char(markerStart)).append(char(marker));
            return out;  // anything after the image is left behind
        }
        if (marker == startOfImage || isRestart(marker) || marker == 0x01)
            return std::nullopt;  // not where a well-formed file has them
        if (at + 2 > size)
            return std::nullopt;
        const quint16 length = qFromBigEndian<quint16>(bytes + at);
        if (length < 2 || at + length > size)
            return std::nullopt;
        const char* payload = jpeg.constData() + at + 2;
        if (keepsSegment(marker, payload, length - 2)) {
            out.append(char(markerStart)).append(char(marker));
            out.append(jpeg.constData() + at, length);
        }
        at += length;
        if (marker != startOfScan)
            continue;
        // Entropy-coded data runs to the next marker that is neither a stuffed zero nor a
        // restart; it is copied as it is.
        const qsizetype dataStart = at;
        while (at + 1 < size && !(bytes[at] == markerStart && bytes[at + 1] != 0 && !isRestart(bytes[at + 1])))
            ++at;
        if (at + 1 >= size)
            return std::nullopt;  // the scan never ends: a truncated file
        out.append(jpeg.constData() + dataStart, at - dataStart);
    }
    return std::nullopt;
}

std::optional<QByteArray> pngWithoutMetadata(const QByteArray& png)
{
    static const QByteArray signature("\x89PNG\r\n\x1a\n", 8);
    static const QList<QByteArray> metadataChunks{"tEXt", "zTXt", "iTXt", "eXIf", "tIME"};
    if (!png.startsWith(signature))
        return std::nullopt;
    QByteArray out = signature;
    qsizetype at = signature.size();
    while (at + 12 <= png.size()) {
        const quint32 length = qFromBigEndian<quint32>(png.constData() + at);
        if (length > quint32(png.size() - at - 12))
            return std::nullopt;
        const QByteArray type = png.mid(at + 4, 4);
        const qsizetype chunkSize = 12 + qsizetype(length);
        if (!metadataChunks.contains(type))
            out.append(png.constData() + at, chunkSize);
        at += chunkSize;
        if (type == "IEND")
            return out;
    }
    return std::nullopt;
}

}  // namespace wendrel
