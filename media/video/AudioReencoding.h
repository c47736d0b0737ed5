#pragma once

#include "media/ffmpeg/AudioEncodePipe.h"
#include "media/ffmpeg/StreamDecoder.h"

namespace wendrel::media {

// A source's sound decoded and encoded as AAC into a new stream of `output`, its times moved
// to the file's start like every other stream's, its tags (language) kept.
class AudioReencoding {
public:
    // Throws "Unsupported audio format" when this computer can't decode the sound. Call before
    // the output's header is written; `fileStart` as for StreamCopy.
    AudioReencoding(MediaOutput& output, const AVStream& source, int bitsPerSecond, int64_t fileStart);

    qint64 framesDecoded() const { return m_decoder.framesDecoded(); }

    // One of the source stream's packets; nullptr drains the decoder.
    void decode(const AVPacket* packet);
    // Writes everything still held.
    void finish();

private:
    StreamDecoder m_decoder;
    int64_t m_start;
    AudioEncodePipe m_pipe;
};

}  // namespace wendrel::media
