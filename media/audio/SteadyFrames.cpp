#include "SteadyFrames.h"

#include "media/ffmpeg/MediaLog.h"

extern "C" {
#include <libavutil/samplefmt.h>
}

namespace wendrel::media {

bool sameFrames(const AudioShape& a, const AudioShape& b)
{
    return a.sampleRate == b.sampleRate && a.format == b.format &&
           av_channel_layout_compare(&a.layout, &b.layout) == 0;
}

SteadyFrames::SteadyFrames(std::string filters) : m_filters(std::move(filters)) {}

SteadyFrames::~SteadyFrames() = default;

void SteadyFrames::push(AVFrame* frame, const AudioShape& shape, const FilterChain::FrameSink& sink)
{
    if (frame && m_chain && !sameFrames(shape, m_input)) {
        qCInfo(lcMedia, "audio changes shape: %d Hz %s", shape.sampleRate, channelLayoutName(shape.layout).c_str());
        m_chain->push(nullptr, sink);
        const std::string conversion = "aresample=" + std::to_string(m_output.sampleRate) +
                                       ",aformat=sample_fmts=" + av_get_sample_fmt_name(m_output.format) +
                                       ":channel_layouts=" + channelLayoutName(m_output.layout);
        m_chain = std::make_unique<FilterChain>(shape, m_filters.empty() ? conversion : m_filters + "," + conversion);
        m_input = shape;
    } else if (frame && !m_chain) {
        m_chain = std::make_unique<FilterChain>(shape, m_filters);
        m_input = shape;
        m_output = {.sampleRate = m_chain->outputSampleRate(),
                    .format = m_chain->outputSampleFormat(),
                    .layout = m_chain->outputLayout(),
                    .timeBase = m_chain->outputTimeBase()};
    }
    if (m_chain)
        m_chain->push(frame, sink);
}

}  // namespace wendrel::media
