#include "AudioReencoding.h"

#include "MovieMetadata.h"
#include "StreamCopy.h"
#include "media/ffmpeg/MediaErrors.h"

namespace wendrel::media {

AudioReencoding::AudioReencoding(MediaOutput& output, const AVStream& source, int bitsPerSecond, int64_t fileStart)
    : m_decoder(source, unsupportedAudioFormat()),
      m_start(startIn(fileStart, source.time_base)),
      m_pipe(output, AudioShape::ofDecoder(m_decoder.context(), source.time_base),
             {.codec = findEncoder(AV_CODEC_ID_AAC), .bitRate = bitsPerSecond})
{
    copyStreamTags(source, m_pipe.stream());
}

void AudioReencoding::decode(const AVPacket* packet)
{
    m_decoder.decode(packet, [&](AVFrame& frame) {
        if (frame.pts != AV_NOPTS_VALUE)
            frame.pts -= m_start;
        m_pipe.push(&frame);
    });
}

void AudioReencoding::finish()
{
    decode(nullptr);
    m_pipe.push(nullptr);
}

}  // namespace wendrel::media
