#pragma once

#include "ImageFormat.h"

#include <QByteArray>
#include <QString>

#include <optional>

namespace vips {
class VImage;
}

namespace wendrel {

// Whether the source's metadata (camera, date, place, colour profile) goes into the result.
// The orientation is never written either way: the pixels are already upright.
enum class MetadataPolicy { keep, drop };

// Encodes an upright 8-bit image (sRGB or grey, alpha allowed) in memory. Formats without
// alpha (JPEG, BMP) get transparent areas flattened onto white. `quality` from 0 to 1 applies
// to the lossy formats only. Throws OperationError "Couldn't save the image".
QByteArray encodeImage(const vips::VImage& image, ImageFormat format, std::optional<double> quality,
                       MetadataPolicy metadata);

// How hard PNG's compressor works. `standard` is libvips' own default (deflate level 6, no row
// filter). `quick` is deflate level 2 with every row predicted from the one above: about twice
// as fast, files a quarter larger on text and half the size on photos (libvips leaves the
// filter off), for pictures made by the hundred (a document's pages).
enum class PngEffort { standard, quick };

// The same, written to a file; large pictures stream to disk instead of into memory.
void writeImage(const vips::VImage& image, ImageFormat format, std::optional<double> quality,
                MetadataPolicy metadata, const QString& path, PngEffort pngEffort = PngEffort::standard);

// The image with transparent areas laid onto white, for formats without alpha.
vips::VImage flattenOntoWhite(const vips::VImage& image);

}  // namespace wendrel
