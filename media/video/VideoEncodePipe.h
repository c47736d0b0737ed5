#pragma once

#include "MovieWriter.h"
#include "PictureSize.h"
#include "StreamTimestamps.h"
#include "media/ffmpeg/FilterChain.h"
#include "media/ffmpeg/MediaOutput.h"
#include "media/ffmpeg/StreamEncoder.h"

#include <memory>

namespace wendrel::media {

// How the picture is encoded.
struct VideoEncoding {
    VideoCodec codec = VideoCodec::h264;
    int crf = 18;
    int64_t bitsPerSecond = 0;  // > 0: average bit rate instead of constant quality
    PictureSize size;           // the stored size to encode at
};

// The encoder's settings for `encoding`, as the encoder's private options: the preset, and
// constant quality or nothing (an average bit rate goes on the codec context).
std::vector<std::pair<std::string, std::string>> videoEncoderOptions(const VideoEncoding& encoding);

// Takes decoded pictures of a source stream, brings them to the encoded size in 8-bit 4:2:0
// (what every player shows), encodes them and writes the packets to a new stream of `output`
// carrying the source's rotation and tags. Each picture keeps its time, so a variable frame
// rate passes through.
class VideoEncodePipe {
public:
    // Adds the stream to `output`; call before the header is written. `fileStart` as for
    // StreamCopy.
    VideoEncodePipe(MediaOutput& output, const AVStream& source, const VideoEncoding& encoding, int64_t fileStart);
    ~VideoEncodePipe();

    AVStream& stream() const { return *m_stream; }

    // Feeds one decoded picture, its time in the source stream's time base; nullptr ends the
    // stream and writes everything the encoder still holds.
    void push(AVFrame* frame);

private:
    void filterFor(const AVFrame& frame);
    void encode(AVFrame* frame);

    MediaOutput& m_output;
    AVRational m_timeBase;
    AVRational m_frameRate;
    PictureSize m_size;
    std::unique_ptr<StreamEncoder> m_encoder;
    std::unique_ptr<FilterChain> m_filter;
    VideoShape m_filterInput;
    FrameTimestamps m_times;
    AVStream* m_stream = nullptr;
};

}  // namespace wendrel::media
