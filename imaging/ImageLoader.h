#pragma once

#include <QSize>
#include <QString>

#include <vips/vips8>

namespace wendrel {

// Every image operation reads its input through here, so every result is upright (the file's
// orientation applied, and no orientation left in its metadata to apply twice), 8 bits per
// channel in sRGB (CMYK, other colour profiles and 16-bit converted) or grey (kept grey),
// with its alpha, and only the first frame of an animation or of a multi-image file.
//
// A file that isn't an image, is truncated or damaged, or claims more pixels than Wendrel will
// hold fails with "Can't read this image" before any large allocation.

// The whole image, decoded into memory.
vips::VImage loadImage(const QString& path);

// The image scaled to exactly `size` (upright width and height), decoded at a reduced size
// where the format allows, which makes shrinking large photos much cheaper.
vips::VImage loadImageScaled(const QString& path, QSize size);

// The upright width and height, read from the header only.
QSize uprightImageSize(const QString& path);

// Whether an upright, standardised image has transparency.
bool hasAlpha(const vips::VImage& image);

}  // namespace wendrel
