#pragma once

#include <QString>

#include <functional>

extern "C" {
#include <libavformat/avformat.h>
}

namespace wendrel {
class OperationContext;
}

namespace wendrel::media {

class MediaInput;

// The container a muted copy is written in, and its file extension.
struct MutedContainer {
    const AVOutputFormat* format = nullptr;
    QString extension;
};

// The source's own container when it can be written and takes its picture streams as they
// are, else MP4, QuickTime or Matroska, the first that takes them all. Throws "Unsupported
// video format" when none does.
MutedContainer mutedContainerFor(const QString& source, const MediaInput& input);

// Copies the picture streams of `input` (never an album cover) to `destination` in `format`,
// packet for packet, with the tags and rotation, and no sound. Throws "No video in this file"
// when there is no picture stream.
void writeMutedMovie(MediaInput& input, const QString& destination, const AVOutputFormat& format,
                     const OperationContext& context, const std::function<void(double)>& progress);

}  // namespace wendrel::media
