#include "PaletteMapper.h"

#include "media/ffmpeg/MediaErrors.h"
#include "media/ffmpeg/MediaLog.h"

extern "C" {
#include <libavfilter/buffersink.h>
#include <libavfilter/buffersrc.h>
}

namespace wendrel::media {

namespace {

void require(int result, const char* what) { requireFilterStep(result, what); }

// One open end of the graph's description, tied to a filter we made.
AVFilterInOut* openEnd(const char* name, AVFilterContext* filter, AVFilterInOut* next)
{
    AVFilterInOut* end = avfilter_inout_alloc();
    if (!end) {
        avfilter_inout_free(&next);
        throw std::bad_alloc();
    }
    end->name = av_strdup(name);
    end->filter_ctx = filter;
    end->pad_idx = 0;
    end->next = next;
    return end;
}

}  // namespace

PaletteMapper::PaletteMapper(const VideoShape& frames, const AVFrame& palette, const std::string& pictureFilters,
                             const std::string& paletteUse)
    : m_shape(frames)
{
    startMedia();
    m_graph.reset(avfilter_graph_alloc());
    if (!m_graph)
        throw std::bad_alloc();
    // Filters run on the caller's thread, as in every chain of the layer.
    m_graph->nb_threads = 1;
    const AVFilter* buffer = avfilter_get_by_name("buffer");
    AVFilterContext* paletteSource = nullptr;
    const VideoShape paletteShape{.width = palette.width,
                                  .height = palette.height,
                                  .format = AVPixelFormat(palette.format),
                                  .sampleAspect = {1, 1},
                                  .timeBase = {1, 1}};
    require(avfilter_graph_create_filter(&m_frames, buffer, "in", videoSourceArguments(frames).c_str(), nullptr,
                                         m_graph.get()),
            "picture input");
    require(avfilter_graph_create_filter(&paletteSource, buffer, "palette",
                                         videoSourceArguments(paletteShape).c_str(), nullptr, m_graph.get()),
            "palette input");
    require(avfilter_graph_create_filter(&m_sink, avfilter_get_by_name("buffersink"), "out", nullptr, nullptr,
                                         m_graph.get()),
            "filter output");

    AVFilterInOut* outputs = openEnd("in", m_frames, openEnd("palette", paletteSource, nullptr));
    AVFilterInOut* inputs = nullptr;
    try {
        inputs = openEnd("out", m_sink, nullptr);
    } catch (...) {
        avfilter_inout_free(&outputs);
        throw;
    }
    const std::string description = "[in]" + pictureFilters + "[picture];[picture][palette]" + paletteUse + "[out]";
    const int parsed = avfilter_graph_parse_ptr(m_graph.get(), description.c_str(), &inputs, &outputs, nullptr);
    avfilter_inout_free(&outputs);
    avfilter_inout_free(&inputs);
    require(parsed, "palette graph description");
    require(avfilter_graph_config(m_graph.get(), nullptr), "palette graph");

    // The one palette frame, then the end of that input: paletteuse keeps using the last
    // palette it had for every picture that follows.
    FramePtr paletteCopy(av_frame_clone(&palette));
    if (!paletteCopy)
        throw std::bad_alloc();
    paletteCopy->pts = 0;
    require(av_buffersrc_add_frame(paletteSource, paletteCopy.get()), "palette frame");
    require(av_buffersrc_add_frame(paletteSource, nullptr), "palette end");
}

void PaletteMapper::push(AVFrame* frame, const FrameSink& sink)
{
    if (frame) {
        const int64_t end = videoFrameEnd(*frame, m_shape);
        if (end != AV_NOPTS_VALUE && (m_end == AV_NOPTS_VALUE || end > m_end))
            m_end = end;
        require(av_buffersrc_add_frame_flags(m_frames, frame, AV_BUFFERSRC_FLAG_KEEP_REF), "picture frame");
    } else {
        // Dated, so the last picture is shown for its whole duration.
        require(av_buffersrc_close(m_frames, m_end, AV_BUFFERSRC_FLAG_PUSH), "picture end");
    }
    drainFilterOutput(*m_sink, *m_frame, sink);
}

AVRational PaletteMapper::outputTimeBase() const { return av_buffersink_get_time_base(m_sink); }

}  // namespace wendrel::media
