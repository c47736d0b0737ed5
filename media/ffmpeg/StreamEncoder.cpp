#include "StreamEncoder.h"

#include "MediaErrors.h"
#include "MediaLog.h"

namespace wendrel::media {

StreamEncoder::StreamEncoder(const AVCodec& codec, const Configure& configure, AVDictionary* options,
                             bool globalHeader)
{
    startMedia();
    m_context.reset(avcodec_alloc_context3(&codec));
    if (!m_context)
        throw std::bad_alloc();
    configure(*m_context);
    if (globalHeader)
        m_context->flags |= AV_CODEC_FLAG_GLOBAL_HEADER;
    AVDictionary* remaining = nullptr;
    av_dict_copy(&remaining, options, 0);
    const int opened = avcodec_open2(m_context.get(), &codec, &remaining);
    av_dict_free(&remaining);
    if (opened < 0) {
        qCWarning(lcMedia, "the %s encoder refused: %s", codec.name, qPrintable(avErrorText(opened)));
        throw cantSaveMedia(avErrorText(opened));
    }
}

void StreamEncoder::encode(const AVFrame* frame, const PacketSink& sink)
{
    const int sent = avcodec_send_frame(m_context.get(), frame);
    if (sent < 0 && sent != AVERROR_EOF) {
        qCWarning(lcMedia, "encoding failed: %s", qPrintable(avErrorText(sent)));
        throw cantSaveMedia(avErrorText(sent));
    }
    for (;;) {
        const int received = avcodec_receive_packet(m_context.get(), m_packet.get());
        if (received == AVERROR(EAGAIN) || received == AVERROR_EOF)
            return;
        if (received < 0)
            throw cantSaveMedia(avErrorText(received));
        handOver(*m_packet, sink);
    }
}

const AVCodec* findEncoder(AVCodecID id) { return avcodec_find_encoder(id); }
const AVCodec* findEncoder(const char* name) { return avcodec_find_encoder_by_name(name); }

}  // namespace wendrel::media
