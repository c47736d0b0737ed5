#include "VideoEncodePipe.h"

#include "ContainerRules.h"
#include "MovieMetadata.h"
#include "StreamCopy.h"
#include "media/ffmpeg/MediaErrors.h"
#include "media/ffmpeg/MediaLog.h"

extern "C" {
#include <libavutil/pixdesc.h>
}

namespace wendrel::media {

namespace {

// "fast": within a few percent of the default preset's size at clearly less time, since people
// wait for a conversion in front of the screen. The same name means the same trade-off in
// both encoders.
constexpr const char* encoderPreset = "fast";

// Full-range pictures stored in the old JPEG formats come out of the filter in video range.
AVColorRange rangeAfterConversion(const AVCodecParameters& source)
{
    const auto format = AVPixelFormat(source.format);
    if (format == AV_PIX_FMT_YUVJ420P || format == AV_PIX_FMT_YUVJ422P || format == AV_PIX_FMT_YUVJ444P)
        return AVCOL_RANGE_MPEG;
    return source.color_range;
}

bool sameShape(const VideoShape& shape, const AVFrame& frame)
{
    return shape.width == frame.width && shape.height == frame.height && shape.format == frame.format &&
           av_cmp_q(shape.sampleAspect, frame.sample_aspect_ratio) == 0;
}

}  // namespace

std::vector<std::pair<std::string, std::string>> videoEncoderOptions(const VideoEncoding& encoding)
{
    std::vector<std::pair<std::string, std::string>> options{{"preset", encoderPreset}};
    if (encoding.bitsPerSecond <= 0)
        options.emplace_back("crf", std::to_string(encoding.crf));
    if (encoding.codec == VideoCodec::hevc)
        options.emplace_back("x265-params", "log-level=error");  // it talks on the terminal otherwise
    return options;
}

VideoEncodePipe::VideoEncodePipe(MediaOutput& output, const AVStream& source, const VideoEncoding& encoding,
                                 int64_t fileStart)
    : m_output(output),
      m_timeBase(source.time_base),
      m_frameRate(av_guess_frame_rate(nullptr, const_cast<AVStream*>(&source), nullptr)),
      m_size(encoding.size),
      m_times(startIn(fileStart, source.time_base),
              m_frameRate.num > 0 ? av_rescale_q(1, av_inv_q(m_frameRate), source.time_base) : 1)
{
    const AVCodec* codec = findEncoder(encoding.codec == VideoCodec::h264 ? "libx264" : "libx265");
    if (!codec)
        throw cantSaveMedia();
    const AVCodecParameters& parameters = *source.codecpar;
    AVDictionary* options = nullptr;
    for (const auto& [key, value] : videoEncoderOptions(encoding))
        av_dict_set(&options, key.c_str(), value.c_str(), 0);
    try {
        m_encoder = std::make_unique<StreamEncoder>(
            *codec,
            [&](AVCodecContext& context) {
                context.width = m_size.width;
                context.height = m_size.height;
                context.pix_fmt = AV_PIX_FMT_YUV420P;
                context.time_base = m_timeBase;
                if (m_frameRate.num > 0)
                    context.framerate = m_frameRate;
                // Scaling both sides alike keeps the pixel shape.
                context.sample_aspect_ratio = parameters.sample_aspect_ratio;
                context.color_range = rangeAfterConversion(parameters);
                context.color_primaries = parameters.color_primaries;
                context.color_trc = parameters.color_trc;
                context.colorspace = parameters.color_space;
                context.chroma_sample_location = parameters.chroma_location;
                if (encoding.bitsPerSecond > 0) {
                    // An average alone lets a hard scene overshoot for long stretches; a
                    // buffer of two seconds at one and a half times the rate keeps the total
                    // near the target while easy scenes give bits to hard ones.
                    context.bit_rate = encoding.bitsPerSecond;
                    context.rc_max_rate = encoding.bitsPerSecond * 3 / 2;
                    context.rc_buffer_size = int(std::min<int64_t>(encoding.bitsPerSecond * 2, INT32_MAX));
                }
                context.thread_count = 0;  // the picture encoder is the slow part: every core
            },
            options, output.wantsGlobalHeader());
    } catch (...) {
        av_dict_free(&options);
        throw;
    }
    av_dict_free(&options);
    m_stream = &output.addStream(m_encoder->context());
    m_stream->codecpar->codec_tag = sampleEntryTag(m_encoder->context().codec_id);
    if (m_frameRate.num > 0)
        m_stream->avg_frame_rate = m_frameRate;
    copyStreamTags(source, *m_stream);
    copyPictureSideData(source, *m_stream, false);
    qCInfo(lcMedia, "encoding the picture with %s at %dx%d, %s", codec->name, m_size.width, m_size.height,
           encoding.bitsPerSecond > 0 ? qPrintable(QStringLiteral("%1 kbit/s").arg(encoding.bitsPerSecond / 1000))
                                      : qPrintable(QStringLiteral("crf %1").arg(encoding.crf)));
}

VideoEncodePipe::~VideoEncodePipe() = default;

void VideoEncodePipe::filterFor(const AVFrame& frame)
{
    if (m_filter && sameShape(m_filterInput, frame))
        return;
    // The picture changed size or format mid-stream (a camera switching modes): what the old
    // chain holds goes out first, then a new chain brings the new shape to the same size.
    if (m_filter)
        m_filter->push(nullptr, [&](AVFrame& filtered) { encode(&filtered); });
    m_filterInput = VideoShape::ofFrame(frame, m_timeBase, m_frameRate);
    const std::string filters = "scale=" + std::to_string(m_size.width) + ":" + std::to_string(m_size.height) +
                                ",format=yuv420p";
    m_filter = std::make_unique<FilterChain>(m_filterInput, filters);
}

void VideoEncodePipe::push(AVFrame* frame)
{
    if (!frame) {
        if (m_filter)
            m_filter->push(nullptr, [&](AVFrame& filtered) { encode(&filtered); });
        encode(nullptr);
        return;
    }
    const std::optional<int64_t> time = m_times.next(frame->pts, AV_NOPTS_VALUE);
    if (!time)
        return;
    frame->pts = *time;
    filterFor(*frame);
    m_filter->push(frame, [&](AVFrame& filtered) { encode(&filtered); });
}

void VideoEncodePipe::encode(AVFrame* frame)
{
    if (frame) {
        frame->pts = av_rescale_q(frame->pts, m_filter->outputTimeBase(), m_timeBase);
        // The source's frame types would force its keyframes on the encoder.
        frame->pict_type = AV_PICTURE_TYPE_NONE;
        frame->sample_aspect_ratio = m_encoder->context().sample_aspect_ratio;
    }
    m_encoder->encode(frame, [&](AVPacket& packet) { m_output.write(packet, m_timeBase, *m_stream); });
}

}  // namespace wendrel::media
