#pragma once

#include <QByteArray>
#include <QList>

namespace wendrel {

// One picture of an icon: a square PNG of `size` pixels (1 to 256).
struct IconImage {
    int size;
    QByteArray png;
};

// A Windows icon file holding the PNGs as they are: a six-byte header, one sixteen-byte
// directory entry per picture in the order given (a side of 256 is written as 0), then the
// PNG data in the same order. All numbers are little-endian.
QByteArray buildIcoFile(const QList<IconImage>& images);

// The sizes every icon gets, smallest first.
inline constexpr int iconSizes[] = {16, 24, 32, 48, 64, 128, 256};

}  // namespace wendrel
