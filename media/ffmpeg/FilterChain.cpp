#include "FilterChain.h"

#include "MediaErrors.h"
#include "MediaLog.h"

extern "C" {
#include <libavfilter/buffersink.h>
#include <libavfilter/buffersrc.h>
#include <libavutil/opt.h>
}

#include <algorithm>

namespace wendrel::media {

namespace {

std::string fraction(AVRational value) { return std::to_string(value.num) + "/" + std::to_string(value.den); }

void require(int result, const char* what) { requireFilterStep(result, what); }

// A layout every filter understands: a decoder that knows only the channel count says so.
AVChannelLayout usableLayout(const AVChannelLayout& layout)
{
    AVChannelLayout usable{};
    if (layout.order == AV_CHANNEL_ORDER_NATIVE && layout.nb_channels > 0)
        av_channel_layout_copy(&usable, &layout);
    else
        av_channel_layout_default(&usable, layout.nb_channels > 0 ? layout.nb_channels : 1);
    return usable;
}

}  // namespace

AudioShape AudioShape::ofDecoder(const AVCodecContext& decoder, AVRational timeBase)
{
    return {.sampleRate = decoder.sample_rate,
            .format = decoder.sample_fmt,
            .layout = usableLayout(decoder.ch_layout),
            .timeBase = timeBase};
}

AudioShape AudioShape::ofFrame(const AVFrame& frame, AVRational timeBase)
{
    return {.sampleRate = frame.sample_rate,
            .format = AVSampleFormat(frame.format),
            .layout = usableLayout(frame.ch_layout),
            .timeBase = timeBase};
}

VideoShape VideoShape::ofFrame(const AVFrame& frame, AVRational timeBase, AVRational frameRate)
{
    return {.width = frame.width,
            .height = frame.height,
            .format = AVPixelFormat(frame.format),
            .sampleAspect = frame.sample_aspect_ratio,
            .timeBase = timeBase,
            .frameRate = frameRate};
}

VideoShape VideoShape::ofDecoder(const AVCodecContext& decoder, AVRational timeBase, AVRational frameRate)
{
    return {.width = decoder.width,
            .height = decoder.height,
            .format = decoder.pix_fmt,
            .sampleAspect = decoder.sample_aspect_ratio,
            .timeBase = timeBase,
            .frameRate = frameRate};
}

std::string channelLayoutName(const AVChannelLayout& layout)
{
    char name[64] = {};
    const AVChannelLayout usable = usableLayout(layout);
    if (av_channel_layout_describe(&usable, name, sizeof name) < 0)
        return std::to_string(layout.nb_channels) + " channels";
    return name;
}

FilterChain::FilterChain(const AudioShape& input, const std::string& filters, int outputFrameSize)
{
    const std::string arguments = "time_base=" + fraction(input.timeBase) +
                                  ":sample_rate=" + std::to_string(input.sampleRate) +
                                  ":sample_fmt=" + av_get_sample_fmt_name(input.format) +
                                  ":channel_layout=" + channelLayoutName(input.layout);
    build("abuffer", arguments, "abuffersink", filters.empty() ? "anull" : filters);
    if (outputFrameSize > 0)
        av_buffersink_set_frame_size(m_sink, unsigned(outputFrameSize));
}

std::string videoSourceArguments(const VideoShape& shape)
{
    const AVRational aspect = shape.sampleAspect.num > 0 ? shape.sampleAspect : AVRational{1, 1};
    std::string arguments = "video_size=" + std::to_string(shape.width) + "x" + std::to_string(shape.height) +
                            ":pix_fmt=" + std::to_string(int(shape.format)) +
                            ":time_base=" + fraction(shape.timeBase) + ":pixel_aspect=" + fraction(aspect);
    if (shape.frameRate.num > 0)
        arguments += ":frame_rate=" + fraction(shape.frameRate);
    return arguments;
}

FilterChain::FilterChain(const VideoShape& input, const std::string& filters)
{
    build("buffer", videoSourceArguments(input), "buffersink", filters.empty() ? "null" : filters);
    m_video = input;
}

int64_t videoFrameEnd(const AVFrame& frame, const VideoShape& shape)
{
    if (frame.pts == AV_NOPTS_VALUE)
        return AV_NOPTS_VALUE;
    int64_t duration = frame.pkt_duration;
    if (duration <= 0 && shape.frameRate.num > 0)
        duration = av_rescale_q(1, av_inv_q(shape.frameRate), shape.timeBase);
    return frame.pts + std::max<int64_t>(duration, 0);
}

void FilterChain::build(const char* source, const std::string& sourceArguments, const char* sink,
                        const std::string& filters)
{
    startMedia();
    m_graph.reset(avfilter_graph_alloc());
    if (!m_graph)
        throw std::bad_alloc();
    // Filters run on the caller's thread: the job already runs files side by side.
    m_graph->nb_threads = 1;
    require(avfilter_graph_create_filter(&m_source, avfilter_get_by_name(source), "in", sourceArguments.c_str(),
                                         nullptr, m_graph.get()),
            "filter input");
    require(avfilter_graph_create_filter(&m_sink, avfilter_get_by_name(sink), "out", nullptr, nullptr, m_graph.get()),
            "filter output");

    AVFilterInOut* outputs = avfilter_inout_alloc();
    AVFilterInOut* inputs = avfilter_inout_alloc();
    if (!outputs || !inputs) {
        avfilter_inout_free(&outputs);
        avfilter_inout_free(&inputs);
        throw std::bad_alloc();
    }
    outputs->name = av_strdup("in");
    outputs->filter_ctx = m_source;
    inputs->name = av_strdup("out");
    inputs->filter_ctx = m_sink;
    const int parsed = avfilter_graph_parse_ptr(m_graph.get(), filters.c_str(), &inputs, &outputs, nullptr);
    avfilter_inout_free(&outputs);
    avfilter_inout_free(&inputs);
    require(parsed, "filter description");
    require(avfilter_graph_config(m_graph.get(), nullptr), "filter graph");
}

void FilterChain::push(AVFrame* frame, const FrameSink& sink)
{
    if (m_video && frame) {
        const int64_t end = videoFrameEnd(*frame, *m_video);
        if (end != AV_NOPTS_VALUE && (m_videoEnd == AV_NOPTS_VALUE || end > m_videoEnd))
            m_videoEnd = end;
    }
    if (!frame && m_videoEnd != AV_NOPTS_VALUE)
        require(av_buffersrc_close(m_source, m_videoEnd, AV_BUFFERSRC_FLAG_PUSH), "filter input end");
    else
        require(av_buffersrc_add_frame_flags(m_source, frame, AV_BUFFERSRC_FLAG_KEEP_REF), "filter input frame");
    pull(sink);
}

void FilterChain::pull(const FrameSink& sink) { drainFilterOutput(*m_sink, *m_frame, sink); }

void requireFilterStep(int result, const char* what)
{
    if (result < 0) {
        qCWarning(lcMedia, "%s: %s", what, qPrintable(avErrorText(result)));
        throw cantReadMedia();
    }
}

void drainFilterOutput(AVFilterContext& output, AVFrame& scratch, const FilterChain::FrameSink& sink)
{
    for (;;) {
        const int received = av_buffersink_get_frame(&output, &scratch);
        if (received == AVERROR(EAGAIN) || received == AVERROR_EOF)
            return;
        requireFilterStep(received, "filter output frame");
        handOver(scratch, sink);
    }
}

AVRational FilterChain::outputTimeBase() const { return av_buffersink_get_time_base(m_sink); }
int FilterChain::outputSampleRate() const { return av_buffersink_get_sample_rate(m_sink); }
AVSampleFormat FilterChain::outputSampleFormat() const { return AVSampleFormat(av_buffersink_get_format(m_sink)); }
AVChannelLayout FilterChain::outputLayout() const
{
    AVChannelLayout layout{};
    av_buffersink_get_ch_layout(m_sink, &layout);
    return layout;
}
int FilterChain::outputWidth() const { return av_buffersink_get_w(m_sink); }
int FilterChain::outputHeight() const { return av_buffersink_get_h(m_sink); }
AVPixelFormat FilterChain::outputPixelFormat() const { return AVPixelFormat(av_buffersink_get_format(m_sink)); }
AVRational FilterChain::outputSampleAspect() const { return av_buffersink_get_sample_aspect_ratio(m_sink); }
AVRational FilterChain::outputFrameRate() const { return av_buffersink_get_frame_rate(m_sink); }

}  // namespace wendrel::media
