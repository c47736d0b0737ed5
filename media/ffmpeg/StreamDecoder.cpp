#include "StreamDecoder.h"

#include "MediaErrors.h"
#include "MediaLog.h"

namespace wendrel::media {

StreamDecoder::StreamDecoder(const AVStream& stream, const OperationError& unsupported, int threads)
{
    startMedia();
    const AVCodec* codec = avcodec_find_decoder(stream.codecpar->codec_id);
    if (!codec) {
        qCInfo(lcMedia, "no decoder for %s", avcodec_get_name(stream.codecpar->codec_id));
        throw unsupported;
    }
    m_context.reset(avcodec_alloc_context3(codec));
    if (!m_context)
        throw std::bad_alloc();
    if (avcodec_parameters_to_context(m_context.get(), stream.codecpar) < 0)
        throw unsupported;
    m_context->pkt_timebase = stream.time_base;
    m_context->thread_count = threads;
    const int opened = avcodec_open2(m_context.get(), codec, nullptr);
    if (opened < 0) {
        qCInfo(lcMedia, "can't open the %s decoder: %s", codec->name, qPrintable(avErrorText(opened)));
        throw unsupported;
    }
}

void StreamDecoder::decode(const AVPacket* packet, const FrameSink& sink)
{
    int sent = avcodec_send_packet(m_context.get(), packet);
    if (sent == AVERROR(EAGAIN)) {
        // The decoder holds frames it wants taken first; then the packet goes in.
        receiveFrames(sink);
        sent = avcodec_send_packet(m_context.get(), packet);
    }
    if (sent < 0 && sent != AVERROR_EOF) {
        ++m_packetsRejected;
        qCDebug(lcMedia, "packet skipped: %s", qPrintable(avErrorText(sent)));
    }
    receiveFrames(sink);
}

void StreamDecoder::receiveFrames(const FrameSink& sink)
{
    for (;;) {
        const int received = avcodec_receive_frame(m_context.get(), m_frame.get());
        if (received == AVERROR(EAGAIN) || received == AVERROR_EOF)
            return;
        if (received < 0) {
            ++m_packetsRejected;
            qCDebug(lcMedia, "frame skipped: %s", qPrintable(avErrorText(received)));
            return;
        }
        m_frame->pts = m_frame->best_effort_timestamp;
        ++m_framesDecoded;
        handOver(*m_frame, sink);
    }
}

}  // namespace wendrel::media
