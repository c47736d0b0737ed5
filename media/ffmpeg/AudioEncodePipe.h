#pragma once

#include "FilterChain.h"
#include "MediaOutput.h"
#include "StreamEncoder.h"

#include <memory>
#include <optional>

namespace wendrel::media {

// How an audio stream is encoded.
struct AudioEncoding {
    const AVCodec* codec = nullptr;
    // The encoder's sample format; AV_SAMPLE_FMT_NONE takes the encoder's first (its native).
    AVSampleFormat sampleFormat = AV_SAMPLE_FMT_NONE;
    // Meaningful bits per sample when fewer than the format holds (24-bit FLAC in 32-bit
    // samples); 0 when all of them count.
    int bitsPerRawSample = 0;
    int sampleRate = 0;  // 0: the input's
    // The channel layout written, for encoders that take only some (AAC); shallow like
    // AudioShape's. No channels: the input's.
    AVChannelLayout layout{};
    int64_t bitRate = 0;  // bits per second for lossy codecs; 0: the codec's default
    // The encoder's private options ("compression_level").
    std::vector<std::pair<std::string, std::string>> options{};
};

// Takes decoded audio frames of any shape, converts them to what the encoder wants (rate,
// sample format, channel layout, frame size), encodes them and writes the packets to a stream
// of `output`. Timestamps are made by counting samples, so gaps or jitter in the source's
// timestamps never reach the result.
class AudioEncodePipe {
public:
    // Adds the stream to `output`; call before `output.writeHeader()`.
    AudioEncodePipe(MediaOutput& output, const AudioShape& input, const AudioEncoding& encoding);
    ~AudioEncodePipe();

    AVStream& stream() const { return *m_stream; }
    AVCodecContext& encoder() const { return m_encoder->context(); }

    // Feeds one frame; nullptr ends the stream and writes everything still held.
    void push(AVFrame* frame);

private:
    void encode(AVFrame* frame);

    MediaOutput& m_output;
    std::unique_ptr<StreamEncoder> m_encoder;
    std::unique_ptr<FilterChain> m_filter;
    AVStream* m_stream = nullptr;
    int64_t m_nextPts = 0;
    bool m_started = false;
};

}  // namespace wendrel::media
