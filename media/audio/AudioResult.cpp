#include "AudioResult.h"

#include "AudioTags.h"
#include "AudioTrack.h"
#include "media/ffmpeg/MediaErrors.h"
#include "media/ffmpeg/MediaLog.h"

namespace wendrel::media {

AudioResult::AudioResult(const QString& destination, AudioContainer container, const AudioTrack& source,
                         EncodingFor encodingFor)
    : m_container(container),
      m_source(source),
      m_encodingFor(std::move(encodingFor)),
      m_output(destination, muxerName(container))
{
    copyAudioTags(source.input().format(), source.stream(), &m_output.format().metadata);
}

AudioResult::~AudioResult() = default;

void AudioResult::push(AVFrame& frame, const AudioShape& shape)
{
    m_steady.push(&frame, shape, [&](AVFrame& steady) { encode(steady); });
}

void AudioResult::encode(AVFrame& frame)
{
    if (!m_pipe)
        start(m_steady.outputShape());
    m_pipe->push(&frame);
}

void AudioResult::start(const AudioShape& shape)
{
    const AudioEncoding encoding = m_encodingFor(shape, m_source.depth());
    m_pipe = std::make_unique<AudioEncodePipe>(m_output, shape, encoding);
    const AVStream* cover = holdsCoverArt(m_container) ? carriableCoverArt(m_source.input().format()) : nullptr;
    if (cover)
        m_coverOut = &m_output.addCopiedStream(*cover);

    // AIFF keeps tags and the cover in an ID3 chunk, which its muxer writes only when asked.
    if (m_container == AudioContainer::aiff)
        m_output.writeHeader({{"write_id3v2", "1"}});
    else
        m_output.writeHeader();
    // The picture goes first: FLAC and AIFF hold back audio until every picture has arrived.
    if (cover)
        writeCoverArt(*cover);
    qCInfo(lcMedia, "audio %s: %s, %d Hz, %s", muxerName(m_container), m_pipe->encoder().codec->name,
           m_pipe->encoder().sample_rate, channelLayoutName(m_pipe->encoder().ch_layout).c_str());
}

void AudioResult::writeCoverArt(const AVStream& picture)
{
    PacketPtr packet = makePacket();
    if (av_packet_ref(packet.get(), &picture.attached_pic) < 0)
        throw std::bad_alloc();
    packet->pts = 0;
    packet->dts = 0;
    m_output.write(*packet, picture.time_base, *m_coverOut);
}

void AudioResult::finish()
{
    m_steady.push(nullptr, {}, [&](AVFrame& steady) { encode(steady); });
    if (!m_pipe)
        throw cantReadMedia();
    m_pipe->push(nullptr);
    m_output.finish();
}

}  // namespace wendrel::media
