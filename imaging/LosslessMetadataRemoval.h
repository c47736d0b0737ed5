#pragma once

#include <QByteArray>

#include <optional>

namespace wendrel {

// A JPEG without its metadata, not re-encoded: EXIF, XMP, IPTC, comments and the other
// application blocks are left out, and so is anything after the end of the image (extra
// pictures with metadata of their own). The pixels, the colour profile and the markers that
// decide how colours decode (JFIF, Adobe) stay byte for byte. None when the file is not a
// well-formed JPEG.
std::optional<QByteArray> jpegWithoutMetadata(const QByteArray& jpeg);

// A PNG without its text, time and EXIF chunks; every other chunk as it was. None when the
// file is not a well-formed PNG.
std::optional<QByteArray> pngWithoutMetadata(const QByteArray& png);

}  // namespace wendrel
