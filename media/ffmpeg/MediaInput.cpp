#include "MediaInput.h"

#include "MediaErrors.h"
#include "MediaLog.h"
#include "operations/OperationContext.h"

namespace wendrel::media {

MediaInput::MediaInput(const QString& path, const OperationContext& context)
    : m_context(&context)
{
    startMedia();
    AVFormatContext* format = avformat_alloc_context();
    if (!format)
        throw std::bad_alloc();
    format->interrupt_callback = {&MediaInput::interruptRequested, this};
    // Reading never leaves the local disk: a playlist named like a movie can't reach the network.
    AVDictionary* options = nullptr;
    av_dict_set(&options, "protocol_whitelist", "file", 0);
    const QByteArray name = path.toUtf8();
    const int opened = avformat_open_input(&format, name.constData(), nullptr, &options);
    av_dict_free(&options);
    if (opened < 0) {  // avformat_open_input frees the context itself on failure
        context.throwIfCancelled();
        qCInfo(lcMedia, "can't open %s: %s", name.constData(), qPrintable(avErrorText(opened)));
        throw cantReadMedia();
    }
    m_format.reset(format);
    const int probed = avformat_find_stream_info(format, nullptr);
    context.throwIfCancelled();
    if (probed < 0 || format->nb_streams == 0) {
        qCInfo(lcMedia, "can't probe %s: %s", name.constData(), qPrintable(avErrorText(probed)));
        throw cantReadMedia();
    }
}

int MediaInput::interruptRequested(void* input)
{
    return static_cast<MediaInput*>(input)->m_context->isCancelled() ? 1 : 0;
}

AVStream* MediaInput::firstStream(AVMediaType type) const
{
    for (unsigned i = 0; i < m_format->nb_streams; ++i) {
        AVStream* stream = m_format->streams[i];
        if (stream->codecpar->codec_type == type && !(stream->disposition & AV_DISPOSITION_ATTACHED_PIC))
            return stream;
    }
    return nullptr;
}

AVStream* MediaInput::coverArt() const
{
    for (unsigned i = 0; i < m_format->nb_streams; ++i) {
        AVStream* stream = m_format->streams[i];
        if ((stream->disposition & AV_DISPOSITION_ATTACHED_PIC) && stream->attached_pic.size > 0)
            return stream;
    }
    return nullptr;
}

double MediaInput::durationSeconds(const AVStream& stream) const
{
    if (stream.duration > 0 && stream.duration != AV_NOPTS_VALUE)
        return double(stream.duration) * av_q2d(stream.time_base);
    if (m_format->duration > 0 && m_format->duration != AV_NOPTS_VALUE)
        return double(m_format->duration) / AV_TIME_BASE;
    return 0;
}

bool MediaInput::readPacket(AVPacket& packet)
{
    const int read = av_read_frame(m_format.get(), &packet);
    if (read >= 0)
        return true;
    m_context->throwIfCancelled();
    if (read != AVERROR_EOF)
        qCInfo(lcMedia, "reading stopped early: %s", qPrintable(avErrorText(read)));
    return false;
}

void MediaInput::rewind()
{
    const int sought = avformat_seek_file(m_format.get(), -1, INT64_MIN, 0, 0, AVSEEK_FLAG_BACKWARD);
    if (sought < 0 && av_seek_frame(m_format.get(), -1, 0, AVSEEK_FLAG_BACKWARD | AVSEEK_FLAG_BYTE) < 0) {
        m_context->throwIfCancelled();
        qCInfo(lcMedia, "can't seek back to the start: %s", qPrintable(avErrorText(sought)));
        throw cantReadMedia();
    }
}

double packetSeconds(const AVPacket& packet, AVRational timeBase)
{
    const int64_t time = packet.pts != AV_NOPTS_VALUE ? packet.pts : packet.dts;
    return time == AV_NOPTS_VALUE ? -1.0 : double(time) * av_q2d(timeBase);
}

}  // namespace wendrel::media
