#include "GifWriter.h"

#include "GifPlan.h"
#include "PaletteMapper.h"
#include "media/ffmpeg/MediaErrors.h"
#include "media/ffmpeg/MediaInput.h"
#include "media/ffmpeg/MediaLog.h"
#include "media/ffmpeg/MediaOutput.h"
#include "media/ffmpeg/StreamDecoder.h"
#include "media/ffmpeg/StreamEncoder.h"
#include "operations/OperationContext.h"

extern "C" {
#include <libavutil/display.h>
}

#include <algorithm>
#include <memory>
#include <optional>

namespace wendrel::media {

namespace {

// The share of the progress bar the palette pass takes: mapping with dithering and encoding
// cost a little more than summing colours.
constexpr double palettePassShare = 0.4;

// Other streams' packets this far past the end mean the picture has ended (a soundtrack that
// runs on for hours after a short clip is never read to its end).
constexpr double interleaveSlackSeconds = 10.0;

double displayRotation(const AVStream& stream)
{
    size_t size = 0;
    const uint8_t* matrix = av_stream_get_side_data(&stream, AV_PKT_DATA_DISPLAYMATRIX, &size);
    if (!matrix || size < 9 * sizeof(int32_t))
        return 0;
    return av_display_rotation_get(reinterpret_cast<const int32_t*>(matrix));
}

// One pass over the first seconds of the picture: every decoded frame within them goes to
// `sink`, and progress moves from `progressFrom` to `progressTo` along the timeline.
class PicturePass {
public:
    PicturePass(MediaInput& input, AVStream& stream, const OperationContext& context)
        : m_input(input), m_stream(stream), m_context(context)
    {
        const AVRational timeBase = stream.time_base;
        m_origin = stream.start_time != AV_NOPTS_VALUE ? stream.start_time : 0;
        m_end = m_origin + av_rescale_q(int64_t(gifLongestSeconds * AV_TIME_BASE), AV_TIME_BASE_Q, timeBase);
        const double duration = input.durationSeconds(stream);
        m_spanSeconds = duration > 0 ? std::min(duration, gifLongestSeconds) : gifLongestSeconds;
    }

    void run(double progressFrom, double progressTo, const StreamDecoder::FrameSink& sink)
    {
        StreamDecoder decoder(m_stream, unsupportedVideoFormat());
        const PacketPtr packet = makePacket();
        const auto keep = [&](AVFrame& frame) {
            if (frame.pts == AV_NOPTS_VALUE || frame.pts < m_end)
                sink(frame);
        };
        while (m_input.readPacket(*packet)) {
            m_context.throwIfCancelled();
            const bool ours = packet->stream_index == m_stream.index;
            const int64_t time = packet->dts != AV_NOPTS_VALUE ? packet->dts : packet->pts;
            const double seconds = time == AV_NOPTS_VALUE ? -1.0 : secondsIn(time, packet->stream_index);
            // Decoding order times only grow, so the first packet past the end has no frame
            // before it left to show.
            if (seconds >= gifLongestSeconds + (ours ? 0.0 : interleaveSlackSeconds)) {
                av_packet_unref(packet.get());
                break;
            }
            if (ours) {
                if (seconds >= 0)
                    m_context.progress(progressFrom + (progressTo - progressFrom) * std::min(1.0, seconds / m_spanSeconds));
                decoder.decode(packet.get(), keep);
            }
            av_packet_unref(packet.get());
        }
        decoder.decode(nullptr, keep);
        m_context.progress(progressTo);
    }

private:
    // Seconds since the picture's start of a time in stream `index`'s time base.
    double secondsIn(int64_t time, int index) const
    {
        const AVStream& stream = *m_input.format().streams[index];
        return av_q2d(stream.time_base) * double(time) - av_q2d(m_stream.time_base) * double(m_origin);
    }

    MediaInput& m_input;
    AVStream& m_stream;
    const OperationContext& m_context;
    int64_t m_origin = 0;
    int64_t m_end = 0;
    double m_spanSeconds = gifLongestSeconds;
};

// The two passes over one file, sharing the plan the first frame decides.
class GifJob {
public:
    GifJob(MediaInput& input, AVStream& stream, const OperationContext& context, int frameRate, int maxWidth)
        : m_input(input), m_stream(stream), m_pass(input, stream, context), m_frameRate(frameRate), m_maxWidth(maxWidth)
    {
    }

    // The palette of the whole clip, from the first pass.
    FramePtr makePalette()
    {
        std::unique_ptr<FilterChain> chain;
        FramePtr palette;
        const auto keepPalette = [&](AVFrame& made) {
            palette.reset(av_frame_clone(&made));
            if (!palette)
                throw std::bad_alloc();
        };
        m_pass.run(0.0, palettePassShare, [&](AVFrame& frame) {
            if (!chain)
                chain = std::make_unique<FilterChain>(shapeOf(frame), planFor(frame).paletteFilters());
            chain->push(&frame, keepPalette);
        });
        if (!chain)
            throw cantReadMedia();
        chain->push(nullptr, keepPalette);
        if (!palette)
            throw cantReadMedia();
        return palette;
    }

    // The second pass: frames mapped onto the palette, encoded and written to `output`.
    void mapAndWrite(const AVFrame& palette, MediaOutput& output)
    {
        m_input.rewind();
        const AVCodec* codec = findEncoder(AV_CODEC_ID_GIF);
        if (!codec)
            throw cantSaveMedia();
        std::unique_ptr<PaletteMapper> mapper;
        std::unique_ptr<StreamEncoder> encoder;
        const AVStream* written = nullptr;
        const auto writePacket = [&](AVPacket& packet) {
            output.write(packet, encoder->context().time_base, *written);
        };
        const auto encode = [&](AVFrame& frame) {
            if (!encoder) {
                encoder = openEncoder(*codec, frame, mapper->outputTimeBase(), output);
                written = &output.addStream(encoder->context());
                writeHeaderLoopingForever(output);
            }
            encoder->encode(&frame, writePacket);
        };
        m_pass.run(palettePassShare, 1.0, [&](AVFrame& frame) {
            if (!mapper)
                mapper = std::make_unique<PaletteMapper>(shapeOf(frame), palette, planFor(frame).pictureFilters(),
                                                         GifPlan::paletteUseFilter());
            mapper->push(&frame, encode);
        });
        if (mapper)
            mapper->push(nullptr, encode);
        if (!encoder)
            throw cantReadMedia();
        encoder->encode(nullptr, writePacket);
    }

private:
    VideoShape shapeOf(AVFrame& frame) const
    {
        VideoShape shape =
            VideoShape::ofFrame(frame, m_stream.time_base, av_guess_frame_rate(&m_input.format(), &m_stream, nullptr));
        // The container's word on the pixel shape when the codec has none.
        shape.sampleAspect = av_guess_sample_aspect_ratio(&m_input.format(), &m_stream, &frame);
        return shape;
    }

    // Decided by the first frame decoded, the same for both passes.
    const GifPlan& planFor(AVFrame& frame)
    {
        if (!m_plan) {
            m_plan = gifPlan(frame.width, frame.height, shapeOf(frame).sampleAspect, displayRotation(m_stream),
                             m_frameRate, m_maxWidth);
            qCInfo(lcMedia, "gif %dx%d at %d fps, %d quarter turns", m_plan->size.width, m_plan->size.height,
                   m_plan->framesPerSecond, m_plan->quarterTurns);
        }
        return *m_plan;
    }

    static std::unique_ptr<StreamEncoder> openEncoder(const AVCodec& codec, const AVFrame& frame, AVRational timeBase,
                                                      const MediaOutput& output)
    {
        return std::make_unique<StreamEncoder>(
            codec,
            [&](AVCodecContext& context) {
                context.width = frame.width;
                context.height = frame.height;
                context.pix_fmt = AV_PIX_FMT_PAL8;
                context.sample_aspect_ratio = {1, 1};
                context.time_base = timeBase;
            },
            nullptr, output.wantsGlobalHeader());
    }

    static void writeHeaderLoopingForever(MediaOutput& output) { output.writeHeader({{"loop", "0"}}); }

    MediaInput& m_input;
    AVStream& m_stream;
    PicturePass m_pass;
    int m_frameRate;
    int m_maxWidth;
    std::optional<GifPlan> m_plan;
};

}  // namespace

void writeGif(const QString& source, const QString& destination, const OperationContext& context, int frameRate,
              int maxWidth)
{
    MediaInput input(source, context);
    AVStream* stream = input.firstStream(AVMEDIA_TYPE_VIDEO);
    if (!stream)
        throw noVideoInFile();
    // Only the picture is read: demuxers that can skip the other streams' data do.
    for (unsigned i = 0; i < input.format().nb_streams; ++i) {
        if (input.format().streams[i] != stream)
            input.format().streams[i]->discard = AVDISCARD_ALL;
    }
    GifJob job(input, *stream, context, frameRate, maxWidth);
    const FramePtr palette = job.makePalette();
    MediaOutput output(destination, "gif");
    job.mapAndWrite(*palette, output);
    output.finish();
}

}  // namespace wendrel::media
