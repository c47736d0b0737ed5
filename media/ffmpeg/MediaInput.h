#pragma once

#include "AvHandles.h"

#include <QString>

namespace wendrel {
class OperationContext;
}

namespace wendrel::media {

// An audio or video file opened for reading, packet by packet. Reading stops with
// OperationCancelled soon after the job is cancelled, even inside a slow read.
class MediaInput {
public:
    // Opens and probes the file. Throws "Can't read this file" when it isn't media the
    // libraries understand (empty, text, damaged beyond its header). `context` must outlive
    // the input.
    MediaInput(const QString& path, const OperationContext& context);

    MediaInput(const MediaInput&) = delete;
    MediaInput& operator=(const MediaInput&) = delete;

    AVFormatContext& format() const { return *m_format; }

    // The first stream of `type` that carries sound or moving pictures (never an album cover
    // stored as a picture stream), or nullptr.
    AVStream* firstStream(AVMediaType type) const;

    // The cover art stored as an attached picture, or nullptr.
    AVStream* coverArt() const;

    // How long `stream` plays, in seconds, from the stream or else the container; 0 when
    // neither says.
    double durationSeconds(const AVStream& stream) const;

    // Reads the next packet of any stream into `packet`; false at the end of the file. A read
    // error past the header ends the file where it broke, the way a truncated download plays
    // up to its end.
    bool readPacket(AVPacket& packet);

    // Back to the start, for a second pass over the file. Throws "Can't read this file" when
    // the file can't seek.
    void rewind();

private:
    static int interruptRequested(void* input);

    const OperationContext* m_context;
    InputFormatPtr m_format;
};

// The packet's presentation time in seconds, or a negative number when it has none.
double packetSeconds(const AVPacket& packet, AVRational timeBase);

}  // namespace wendrel::media
