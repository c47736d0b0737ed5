#include "BmpEncoder.h"

#include <QtEndian>

#include <limits>

namespace wendrel {

namespace {

constexpr int fileHeaderSize = 14;
constexpr int infoHeaderSize = 40;
constexpr qint32 pixelsPerMetre72Dpi = 2835;

void put16(char* at, quint16 value) { qToLittleEndian(value, at); }
void put32(char* at, quint32 value) { qToLittleEndian(value, at); }

}  // namespace

QByteArray encodeBmp(int width, int height, int bands, const unsigned char* pixels)
{
    if (width <= 0 || height <= 0 || (bands != 1 && bands != 3))
        return {};
    const qint64 rowBytes = (qint64(width) * 3 + 3) / 4 * 4;
    const qint64 imageBytes = rowBytes * height;
    const qint64 fileBytes = fileHeaderSize + infoHeaderSize + imageBytes;
    if (fileBytes > std::numeric_limits<qint32>::max())
        return {};

    QByteArray bmp(static_cast<qsizetype>(fileBytes), '\0');
    char* data = bmp.data();
    data[0] = 'B';
    data[1] = 'M';
    put32(data + 2, quint32(fileBytes));
    put32(data + 10, fileHeaderSize + infoHeaderSize);

    char* info = data + fileHeaderSize;
    put32(info, infoHeaderSize);
    put32(info + 4, quint32(width));
    put32(info + 8, quint32(height));  // positive: rows run bottom-up
    put16(info + 12, 1);               // planes
    put16(info + 14, 24);              // bits per pixel
    put32(info + 20, quint32(imageBytes));
    put32(info + 24, pixelsPerMetre72Dpi);
    put32(info + 28, pixelsPerMetre72Dpi);

    char* out = info + infoHeaderSize;
    for (int row = height - 1; row >= 0; --row, out += rowBytes) {
        const unsigned char* in = pixels + qint64(row) * width * bands;
        for (int x = 0; x < width; ++x, in += bands) {
            const unsigned char red = in[0];
            const unsigned char green = bands == 3 ? in[1] : in[0];
            const unsigned char blue = bands == 3 ? in[2] : in[0];
            out[x * 3] = char(blue);
            out[x * 3 + 1] = char(green);
            out[x * 3 + 2] = char(red);
        }
    }
    return bmp;
}

}  // namespace wendrel
