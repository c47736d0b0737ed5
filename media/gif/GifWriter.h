#pragma once

#include <QString>

namespace wendrel {
class OperationContext;
}

namespace wendrel::media {

// Writes the first seconds of `source`'s picture to `destination` as an animated GIF that loops
// forever, at `frameRate` frames a second and at most `maxWidth` pixels wide, with a palette
// made for this clip. Two passes over the file, frame by frame: the first sums the colours
// into the palette, the second maps every frame onto it; memory stays flat whatever the length.
// Throws OperationError ("No video in this file", "Unsupported video format", "Can't read this
// file") and OperationCancelled.
void writeGif(const QString& source, const QString& destination, const OperationContext& context, int frameRate,
              int maxWidth);

}  // namespace wendrel::media
