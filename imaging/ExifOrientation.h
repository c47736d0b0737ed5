#pragma once

#include <QByteArray>

namespace wendrel {

// The EXIF block without its orientation tag, changing nothing else: the tag's entry is taken
// out of the first directory in place, so every offset in the block stays valid. The block
// may start with "Exif\0\0". A block without the tag, or one too damaged to edit safely, is
// returned unchanged.
QByteArray withoutExifOrientation(const QByteArray& exif);

// The XMP packet without tiff:Orientation, written either as an attribute or as an element.
QByteArray withoutXmpOrientation(const QByteArray& xmp);

}  // namespace wendrel
