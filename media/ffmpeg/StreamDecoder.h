#pragma once

#include "AvHandles.h"
#include "operations/OperationError.h"

#include <functional>

namespace wendrel::media {

// Turns one stream's packets into frames.
class StreamDecoder {
public:
    using FrameSink = std::function<void(AVFrame& frame)>;

    // Opens the decoder for `stream`, with `threads` threads (0: as many as the machine has).
    // Throws `unsupported` when this computer has no decoder for the stream's codec.
    StreamDecoder(const AVStream& stream, const OperationError& unsupported, int threads = 0);

    AVCodecContext& context() const { return *m_context; }

    // Decodes `packet` (nullptr drains the decoder at the end) and hands every finished frame
    // to `sink`, its pts set from the best-effort timestamp in the stream's time base. A packet
    // the decoder rejects is skipped, as players do with a damaged stretch; the caller decides
    // by `framesDecoded()` whether anything useful came out.
    void decode(const AVPacket* packet, const FrameSink& sink);

    qint64 framesDecoded() const { return m_framesDecoded; }
    qint64 packetsRejected() const { return m_packetsRejected; }

private:
    void receiveFrames(const FrameSink& sink);

    CodecContextPtr m_context;
    FramePtr m_frame = makeFrame();
    qint64 m_framesDecoded = 0;
    qint64 m_packetsRejected = 0;
};

}  // namespace wendrel::media
