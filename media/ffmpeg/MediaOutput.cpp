#include "MediaOutput.h"

#include "MediaErrors.h"
#include "MediaLog.h"

namespace wendrel::media {

namespace {

void require(int result, const char* what)
{
    if (result < 0) {
        qCWarning(lcMedia, "%s: %s", what, qPrintable(avErrorText(result)));
        throw cantSaveMedia(avErrorText(result));
    }
}

}  // namespace

MediaOutput::MediaOutput(const QString& path, const char* formatName)
{
    startMedia();
    const QByteArray name = path.toUtf8();
    require(avformat_alloc_output_context2(&m_format, nullptr, formatName, name.constData()), "output container");
    try {
        require(avio_open(&m_format->pb, name.constData(), AVIO_FLAG_WRITE), "output file");
    } catch (...) {
        avformat_free_context(m_format);
        throw;
    }
}

MediaOutput::~MediaOutput()
{
    if (!m_format)
        return;
    if (!m_finished)
        avio_closep(&m_format->pb);
    avformat_free_context(m_format);
}

bool MediaOutput::wantsGlobalHeader() const { return m_format->oformat->flags & AVFMT_GLOBALHEADER; }

AVStream& MediaOutput::addStream(const AVCodecContext& encoder)
{
    AVStream* stream = avformat_new_stream(m_format, nullptr);
    if (!stream)
        throw std::bad_alloc();
    require(avcodec_parameters_from_context(stream->codecpar, &encoder), "output stream");
    stream->time_base = encoder.time_base;
    return *stream;
}

AVStream& MediaOutput::addCopiedStream(const AVStream& source)
{
    AVStream* stream = avformat_new_stream(m_format, nullptr);
    if (!stream)
        throw std::bad_alloc();
    require(avcodec_parameters_copy(stream->codecpar, source.codecpar), "copied stream");
    // The source container's tag may mean nothing in this one; the muxer picks its own.
    stream->codecpar->codec_tag = 0;
    stream->time_base = source.time_base;
    stream->disposition = source.disposition;
    return *stream;
}

void MediaOutput::writeHeader(const MuxerOptions& options)
{
    AVDictionary* remaining = nullptr;
    for (const auto& [name, value] : options)
        av_dict_set(&remaining, name, value, 0);
    const int written = avformat_write_header(m_format, &remaining);
    av_dict_free(&remaining);
    require(written, "output header");
    m_headerWritten = true;
}

void MediaOutput::write(AVPacket& packet, AVRational timeBase, const AVStream& stream)
{
    packet.stream_index = stream.index;
    av_packet_rescale_ts(&packet, timeBase, stream.time_base);
    require(av_interleaved_write_frame(m_format, &packet), "output packet");
}

void MediaOutput::finish()
{
    if (!m_headerWritten)
        writeHeader();
    require(av_write_trailer(m_format), "output trailer");
    m_finished = true;
    require(avio_closep(&m_format->pb), "closing the output");
}

}  // namespace wendrel::media
