#pragma once

#include <QByteArray>

namespace vips {
class VImage;
}

namespace wendrel {

// Lossy WebP written with libwebp itself, configured as libvips' own saver configures it, but
// with the encoder's second thread on: libvips leaves it off, and a single large picture, with
// no other files to run beside it, otherwise leaves a core idle. `image` is upright, 8-bit, sRGB
// or grey, alpha allowed. With `withMetadata`, its colour profile, EXIF and XMP go along.
// Throws vips::VError when libvips can't give the pixels, OperationError "Couldn't save the
// image" when libwebp refuses them.
QByteArray encodeWebP(const vips::VImage& image, int quality, bool withMetadata);

}  // namespace wendrel
