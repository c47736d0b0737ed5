#pragma once

#include "AudioFormatChoice.h"
#include "media/ffmpeg/FilterChain.h"
#include "media/ffmpeg/MediaInput.h"

#include <functional>
#include <memory>

namespace wendrel::media {

class StreamDecoder;

// The first audio track of a file, decoded from its start as many times as asked: a second
// pass decodes again rather than keeping samples, so memory stays the same for a song and for
// a ten-hour recording.
class AudioTrack {
public:
    using FrameSink = std::function<void(AVFrame& frame)>;
    using Progress = std::function<void(double fraction)>;

    // Opens the file. Throws "Can't read this file" when it isn't media and "No audio in this
    // file" when it has no audio track (a silent video).
    AudioTrack(const QString& path, const OperationContext& context);
    ~AudioTrack();

    const MediaInput& input() const { return m_input; }
    const AVStream& stream() const { return *m_stream; }

    // Decodes the whole track from the start, handing each frame, as the decoder makes it, to
    // `sink` and reporting how far it got from 0 to 1 (by the media timeline, or by bytes read
    // when the file doesn't say how long it plays). Stops promptly when the job is cancelled.
    // Throws "Unsupported audio format" when no decoder is there and "Can't read this file"
    // when not one frame decodes. A damaged stretch is skipped; a truncated file gives what
    // it holds.
    void decode(const FrameSink& sink, const Progress& progress);

    // What `frame`, as the decoder made it, looks like.
    AudioShape shapeOf(const AVFrame& frame) const { return AudioShape::ofFrame(frame, m_stream->time_base); }

    // While `decode` runs (valid from the first frame): how precise the source's samples are.
    SampleDepth depth() const;

private:
    double fractionRead(const AVPacket& packet) const;

    const OperationContext& m_context;
    MediaInput m_input;
    AVStream* m_stream = nullptr;
    double m_duration = 0;
    std::unique_ptr<StreamDecoder> m_decoder;
    bool m_read = false;
};

}  // namespace wendrel::media
