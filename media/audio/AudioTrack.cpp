#include "AudioTrack.h"

#include "media/ffmpeg/MediaErrors.h"
#include "media/ffmpeg/MediaLog.h"
#include "media/ffmpeg/StreamDecoder.h"
#include "operations/OperationContext.h"

#include <algorithm>

namespace wendrel::media {

AudioTrack::AudioTrack(const QString& path, const OperationContext& context)
    : m_context(context), m_input(path, context)
{
    m_stream = m_input.firstStream(AVMEDIA_TYPE_AUDIO);
    if (!m_stream)
        throw noAudioInFile();
    // The demuxer skips what no one reads: a movie's picture packets are dropped unparsed.
    AVFormatContext& format = m_input.format();
    for (unsigned i = 0; i < format.nb_streams; ++i) {
        if (format.streams[i] != m_stream)
            format.streams[i]->discard = AVDISCARD_ALL;
    }
    m_duration = m_input.durationSeconds(*m_stream);
}

AudioTrack::~AudioTrack() = default;

void AudioTrack::decode(const FrameSink& sink, const Progress& progress)
{
    if (m_read)
        m_input.rewind();
    m_read = true;
    // A fresh decoder each pass: nothing of the previous pass's state leaks into this one. One
    // thread: files are already decoded side by side.
    m_decoder = std::make_unique<StreamDecoder>(*m_stream, unsupportedAudioFormat(), 1);
    PacketPtr packet = makePacket();
    double reported = 0;
    while (m_input.readPacket(*packet)) {
        m_context.throwIfCancelled();
        if (packet->stream_index == m_stream->index) {
            // Progress is posted across threads: a step of a thousandth is plenty for a bar.
            const double fraction = fractionRead(*packet);
            if (fraction >= reported + 0.001) {
                reported = fraction;
                progress(fraction);
            }
            m_decoder->decode(packet.get(), sink);
        }
        av_packet_unref(packet.get());
    }
    m_decoder->decode(nullptr, sink);
    if (m_decoder->framesDecoded() == 0) {
        qCInfo(lcMedia, "no audio frame decoded (%lld packets rejected)",
               static_cast<long long>(m_decoder->packetsRejected()));
        throw cantReadMedia();
    }
    progress(1.0);
}

double AudioTrack::fractionRead(const AVPacket& packet) const
{
    if (m_duration > 0) {
        const double seconds = packetSeconds(packet, m_stream->time_base);
        const double start = m_stream->start_time != AV_NOPTS_VALUE ? double(m_stream->start_time) * av_q2d(m_stream->time_base) : 0;
        if (seconds >= 0)
            return std::clamp((seconds - std::max(start, 0.0)) / m_duration, 0.0, 1.0);
    }
    // No timeline: how much of the file has been read.
    AVIOContext* io = m_input.format().pb;
    const int64_t size = io ? avio_size(io) : -1;
    if (size <= 0)
        return 0;
    return std::clamp(double(avio_tell(io)) / double(size), 0.0, 1.0);
}

SampleDepth AudioTrack::depth() const
{
    const AVCodecContext& decoder = m_decoder->context();
    const int bits = decoder.bits_per_raw_sample > 0 ? decoder.bits_per_raw_sample : m_stream->codecpar->bits_per_raw_sample;
    return sourceDepth(decoder.codec_id, decoder.sample_fmt, bits);
}

}  // namespace wendrel::media
