#include "StreamCopy.h"

#include "ContainerRules.h"
#include "MovieMetadata.h"

namespace wendrel::media {

int64_t startIn(int64_t fileStart, AVRational timeBase)
{
    return fileStart == AV_NOPTS_VALUE ? 0 : av_rescale_q(fileStart, AV_TIME_BASE_Q, timeBase);
}

StreamCopy::StreamCopy(MediaOutput& output, const AVStream& source, int64_t fileStart)
    : m_output(output), m_timeBase(source.time_base), m_times(startIn(fileStart, source.time_base))
{
    m_stream = &output.addCopiedStream(source);
    m_stream->codecpar->codec_tag = sampleEntryTag(source.codecpar->codec_id);
    copyStreamTags(source, *m_stream);
    copyPictureSideData(source, *m_stream, true);
}

void StreamCopy::write(AVPacket& packet)
{
    const auto times = m_times.next(packet.pts, packet.dts, packet.duration, AV_NOPTS_VALUE);
    packet.pts = times.pts;
    packet.dts = times.dts;
    packet.pos = -1;
    m_output.write(packet, m_timeBase, *m_stream);
    ++m_packetsWritten;
}

}  // namespace wendrel::media
