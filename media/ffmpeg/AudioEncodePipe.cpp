#include "AudioEncodePipe.h"

#include "MediaErrors.h"

extern "C" {
#include <libavutil/opt.h>
}

namespace wendrel::media {

namespace {

AVSampleFormat encoderSampleFormat(const AudioEncoding& encoding)
{
    if (encoding.sampleFormat != AV_SAMPLE_FMT_NONE)
        return encoding.sampleFormat;
    return encoding.codec->sample_fmts ? encoding.codec->sample_fmts[0] : AV_SAMPLE_FMT_FLTP;
}

}  // namespace

AudioEncodePipe::AudioEncodePipe(MediaOutput& output, const AudioShape& input, const AudioEncoding& encoding)
    : m_output(output)
{
    if (!encoding.codec)
        throw cantSaveMedia();
    const int sampleRate = encoding.sampleRate > 0 ? encoding.sampleRate : input.sampleRate;
    const AVSampleFormat sampleFormat = encoderSampleFormat(encoding);

    AVDictionary* options = nullptr;
    for (const auto& [key, value] : encoding.options)
        av_dict_set(&options, key.c_str(), value.c_str(), 0);
    try {
        m_encoder = std::make_unique<StreamEncoder>(
            *encoding.codec,
            [&](AVCodecContext& context) {
                context.sample_rate = sampleRate;
                context.sample_fmt = sampleFormat;
                av_channel_layout_copy(&context.ch_layout,
                                       encoding.layout.nb_channels > 0 ? &encoding.layout : &input.layout);
                context.time_base = {1, sampleRate};
                context.bit_rate = encoding.bitRate;
                context.bits_per_raw_sample = encoding.bitsPerRawSample;
                // One thread per file: files run side by side already.
                context.thread_count = 1;
            },
            options, output.wantsGlobalHeader());
    } catch (...) {
        av_dict_free(&options);
        throw;
    }
    av_dict_free(&options);

    const AVCodecContext& context = m_encoder->context();
    // Encoders without variable frame sizes (AAC: 1024 samples) get exactly their frame size.
    const bool fixedFrames = !(encoding.codec->capabilities & AV_CODEC_CAP_VARIABLE_FRAME_SIZE) && context.frame_size > 0;
    const std::string filters = "aresample=" + std::to_string(sampleRate) +
                                ",aformat=sample_fmts=" + av_get_sample_fmt_name(sampleFormat) +
                                ":channel_layouts=" + channelLayoutName(context.ch_layout);
    m_filter = std::make_unique<FilterChain>(input, filters, fixedFrames ? context.frame_size : 0);
    m_stream = &output.addStream(context);
}

AudioEncodePipe::~AudioEncodePipe() = default;

void AudioEncodePipe::push(AVFrame* frame)
{
    m_filter->push(frame, [&](AVFrame& converted) { encode(&converted); });
    if (!frame)
        encode(nullptr);
}

void AudioEncodePipe::encode(AVFrame* frame)
{
    if (frame) {
        // The first sample keeps its place on the timeline (a soundtrack that starts after the
        // picture stays in step with it); the rest follow by count.
        if (!m_started && frame->pts != AV_NOPTS_VALUE && frame->pts > 0)
            m_nextPts = av_rescale_q(frame->pts, m_filter->outputTimeBase(), m_encoder->context().time_base);
        m_started = true;
        frame->pts = m_nextPts;
        m_nextPts += frame->nb_samples;
    }
    const AVRational timeBase = m_encoder->context().time_base;
    m_encoder->encode(frame, [&](AVPacket& packet) { m_output.write(packet, timeBase, *m_stream); });
}

}  // namespace wendrel::media
