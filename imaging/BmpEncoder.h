#pragma once

#include <QByteArray>

namespace wendrel {

// A Windows bitmap: uncompressed 24-bit, bottom-up rows padded to four bytes, 72 dpi — the
// variant every program reads. `pixels` holds `height` rows of `width` RGB triples, or of
// single grey values when `bands` is 1. Returns an empty array for sizes a BMP can't hold.
QByteArray encodeBmp(int width, int height, int bands, const unsigned char* pixels);

}  // namespace wendrel
