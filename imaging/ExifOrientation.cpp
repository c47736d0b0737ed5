#include "ExifOrientation.h"

#include <QRegularExpression>
#include <QtEndian>

#include <cstring>

namespace wendrel {

namespace {

constexpr quint16 orientationTag = 0x0112;
constexpr int entrySize = 12;

class TiffBytes {
public:
    TiffBytes(char* data, qsizetype size, bool bigEndian) : m_data(data), m_size(size), m_bigEndian(bigEndian) {}

    bool fits(qint64 offset, qint64 length) const { return offset >= 0 && length >= 0 && offset + length <= m_size; }

    quint16 read16(qint64 offset) const
    {
        return m_bigEndian ? qFromBigEndian<quint16>(m_data + offset) : qFromLittleEndian<quint16>(m_data + offset);
    }
    quint32 read32(qint64 offset) const
    {
        return m_bigEndian ? qFromBigEndian<quint32>(m_data + offset) : qFromLittleEndian<quint32>(m_data + offset);
    }
    void write16(qint64 offset, quint16 value)
    {
        m_bigEndian ? qToBigEndian(value, m_data + offset) : qToLittleEndian(value, m_data + offset);
    }
    char* at(qint64 offset) { return m_data + offset; }

private:
    char* m_data;
    qsizetype m_size;
    bool m_bigEndian;
};

}  // namespace

QByteArray withoutExifOrientation(const QByteArray& exif)
{
    QByteArray result = exif;
    const qsizetype start = result.startsWith(QByteArray("Exif\0\0", 6)) ? 6 : 0;
    if (result.size() - start < 8)
        return exif;
    char* tiff = result.data() + start;
    const bool bigEndian = std::memcmp(tiff, "MM\0*", 4) == 0;
    if (!bigEndian && std::memcmp(tiff, "II*\0", 4) != 0)
        return exif;
    TiffBytes bytes(tiff, result.size() - start, bigEndian);

    const qint64 directory = bytes.read32(4);
    if (!bytes.fits(directory, 2))
        return exif;
    const int count = bytes.read16(directory);
    const qint64 entries = directory + 2;
    // The entries and the 4-byte link to the next directory that follows them.
    if (!bytes.fits(entries, qint64(count) * entrySize + 4))
        return exif;

    for (int index = 0; index < count; ++index) {
        const qint64 entry = entries + qint64(index) * entrySize;
        if (bytes.read16(entry) != orientationTag)
            continue;
        // Slide the later entries and the next-directory link up over this one; the freed
        // twelve bytes at the end become unused space.
        const qint64 rest = entries + qint64(count) * entrySize + 4 - (entry + entrySize);
        std::memmove(bytes.at(entry), bytes.at(entry + entrySize), static_cast<size_t>(rest));
        std::memset(bytes.at(entry + rest), 0, entrySize);
        bytes.write16(directory, quint16(count - 1));
        return result;
    }
    return exif;
}

QByteArray withoutXmpOrientation(const QByteArray& xmp)
{
    static const QRegularExpression attribute(QStringLiteral(R"(\s+tiff:Orientation\s*=\s*("[^"]*"|'[^']*'))"));
    static const QRegularExpression element(
        QStringLiteral(R"(<tiff:Orientation(\s[^>]*)?>[^<]*</tiff:Orientation>|<tiff:Orientation\s*/>)"));
    QString text = QString::fromUtf8(xmp);
    const qsizetype before = text.size();
    text.remove(attribute);
    text.remove(element);
    return text.size() == before ? xmp : text.toUtf8();
}

}  // namespace wendrel
