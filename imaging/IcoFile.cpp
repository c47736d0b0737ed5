#include "IcoFile.h"

#include <QtEndian>

namespace wendrel {

namespace {

constexpr int headerSize = 6;
constexpr int entrySize = 16;

void append16(QByteArray& bytes, quint16 value)
{
    char buffer[2];
    qToLittleEndian(value, buffer);
    bytes.append(buffer, 2);
}

void append32(QByteArray& bytes, quint32 value)
{
    char buffer[4];
    qToLittleEndian(value, buffer);
    bytes.append(buffer, 4);
}

}  // namespace

QByteArray buildIcoFile(const QList<IconImage>& images)
{
    QByteArray ico;
    append16(ico, 0);  // reserved
    append16(ico, 1);  // an icon, not a cursor
    append16(ico, quint16(images.size()));

    quint32 offset = headerSize + entrySize * quint32(images.size());
    for (const IconImage& image : images) {
        const char side = char(image.size >= 256 ? 0 : image.size);
        ico.append(side);      // width
        ico.append(side);      // height
        ico.append('\0');      // no palette
        ico.append('\0');      // reserved
        append16(ico, 1);      // colour planes
        append16(ico, 32);     // bits per pixel
        append32(ico, quint32(image.png.size()));
        append32(ico, offset);
        offset += quint32(image.png.size());
    }
    for (const IconImage& image : images)
        ico.append(image.png);
    return ico;
}

}  // namespace wendrel
