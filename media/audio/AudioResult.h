#pragma once

#include "AudioFormatChoice.h"
#include "SteadyFrames.h"
#include "media/ffmpeg/AudioEncodePipe.h"
#include "media/ffmpeg/MediaOutput.h"

#include <functional>
#include <memory>

namespace wendrel::media {

class AudioTrack;

// An audio file being written in scratch space from decoded frames, with the source's tags and,
// where the container holds one, its cover picture. The file starts with the first frame: only
// decoded audio tells its shape for certain.
class AudioResult {
public:
    // The encoding for frames shaped like `frames` from a source whose samples are `depth`.
    using EncodingFor = std::function<AudioEncoding(const AudioShape& frames, SampleDepth depth)>;

    AudioResult(const QString& destination, AudioContainer container, const AudioTrack& source,
                EncodingFor encodingFor);
    ~AudioResult();

    // Encodes a frame shaped like `shape`. Frames may change shape along the way; they are
    // converted to the first frames' shape.
    void push(AVFrame& frame, const AudioShape& shape);

    // Writes what the encoder still holds and closes the file.
    void finish();

private:
    void encode(AVFrame& frame);
    void start(const AudioShape& shape);
    void writeCoverArt(const AVStream& picture);

    AudioContainer m_container;
    const AudioTrack& m_source;
    EncodingFor m_encodingFor;
    MediaOutput m_output;
    SteadyFrames m_steady{""};
    std::unique_ptr<AudioEncodePipe> m_pipe;
    AVStream* m_coverOut = nullptr;
};

}  // namespace wendrel::media
