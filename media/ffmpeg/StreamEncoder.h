#pragma once

#include "AvHandles.h"

#include <functional>

namespace wendrel::media {

// Turns frames into packets of one stream.
class StreamEncoder {
public:
    using PacketSink = std::function<void(AVPacket& packet)>;
    using Configure = std::function<void(AVCodecContext& context)>;

    // Opens `codec` after `configure` has set the stream's shape (sample rate, layout, size,
    // time base, bit rate...). `options` are the encoder's private options ("crf", "preset");
    // `globalHeader` when the container keeps codec headers apart (MP4, MOV). Throws
    // "Couldn't save the result" with the library's reason when the encoder refuses.
    StreamEncoder(const AVCodec& codec, const Configure& configure, AVDictionary* options, bool globalHeader);

    AVCodecContext& context() const { return *m_context; }

    // Encodes `frame` (nullptr flushes at the end) and hands every finished packet to `sink`,
    // timestamps in the encoder's time base.
    void encode(const AVFrame* frame, const PacketSink& sink);

private:
    CodecContextPtr m_context;
    PacketPtr m_packet = makePacket();
};

// The encoder this computer has for `id`, or by name ("libx264"); nullptr when it has none.
const AVCodec* findEncoder(AVCodecID id);
const AVCodec* findEncoder(const char* name);

}  // namespace wendrel::media
