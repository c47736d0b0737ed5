#pragma once

#include "StreamTimestamps.h"
#include "media/ffmpeg/MediaOutput.h"

namespace wendrel::media {

// One stream carried into the result packet for packet, unchanged: instant and lossless. Its
// tags, rotation and other picture details go with it.
class StreamCopy {
public:
    // Adds the stream to `output` (before its header is written); `fileStart` is where the
    // source's timeline begins, in AV_TIME_BASE units, or AV_NOPTS_VALUE.
    StreamCopy(MediaOutput& output, const AVStream& source, int64_t fileStart);

    AVStream& stream() const { return *m_stream; }
    qint64 packetsWritten() const { return m_packetsWritten; }

    // Writes one of the source stream's packets; takes its data.
    void write(AVPacket& packet);

private:
    MediaOutput& m_output;
    AVRational m_timeBase;
    AVStream* m_stream = nullptr;
    CopiedTimestamps m_times;
    qint64 m_packetsWritten = 0;
};

// Where `fileStart` (AV_TIME_BASE units, or AV_NOPTS_VALUE) falls in `timeBase`.
int64_t startIn(int64_t fileStart, AVRational timeBase);

}  // namespace wendrel::media
