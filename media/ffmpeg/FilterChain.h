#pragma once

#include "AvHandles.h"

#include <functional>
#include <optional>
#include <string>

extern "C" {
#include <libavutil/channel_layout.h>
}

namespace wendrel::media {

// What audio frames look like: enough to describe them to a filter or an encoder.
struct AudioShape {
    int sampleRate = 0;
    AVSampleFormat format = AV_SAMPLE_FMT_NONE;
    AVChannelLayout layout{};  // shallow: native or default layouts only, nothing to free
    AVRational timeBase{1, 1};

    // As a decoder produces them, with pts in `timeBase` (the stream's).
    static AudioShape ofDecoder(const AVCodecContext& decoder, AVRational timeBase);
    // As `frame` is. Safer than the decoder's word: some decoders learn the sample format or
    // layout only from the first frame, so chains are best built when it arrives.
    static AudioShape ofFrame(const AVFrame& frame, AVRational timeBase);
};

// What video frames look like.
struct VideoShape {
    int width = 0;
    int height = 0;
    AVPixelFormat format = AV_PIX_FMT_NONE;
    AVRational sampleAspect{0, 1};
    AVRational timeBase{1, 1};
    AVRational frameRate{0, 1};  // 0/1 when unknown

    static VideoShape ofDecoder(const AVCodecContext& decoder, AVRational timeBase, AVRational frameRate);
    static VideoShape ofFrame(const AVFrame& frame, AVRational timeBase, AVRational frameRate);
};

// One chain of libavfilter filters from a single input to a single output ("aresample=44100,
// aformat=sample_fmts=fltp", "fps=15,scale=640:-2"). Frames go in with `push` and come out with
// `pull`; nothing is buffered beyond what the filters themselves need.
class FilterChain {
public:
    using FrameSink = std::function<void(AVFrame& frame)>;

    // `filters` may be empty ("anull"/"null" is used). Throws "Can't read this file" when the
    // chain can't be built for these frames, with libavfilter's reason in the log.
    FilterChain(const AudioShape& input, const std::string& filters, int outputFrameSize = 0);
    FilterChain(const VideoShape& input, const std::string& filters);

    // Feeds a frame (nullptr marks the end of the input) and hands everything the output has
    // ready to `sink`.
    void push(AVFrame* frame, const FrameSink& sink);

    // What comes out.
    AVRational outputTimeBase() const;
    int outputSampleRate() const;
    AVSampleFormat outputSampleFormat() const;
    AVChannelLayout outputLayout() const;  // shallow copy, valid while the chain lives
    int outputWidth() const;
    int outputHeight() const;
    AVPixelFormat outputPixelFormat() const;
    AVRational outputSampleAspect() const;
    AVRational outputFrameRate() const;

private:
    void build(const char* source, const std::string& sourceArguments, const char* sink, const std::string& filters);
    void pull(const FrameSink& sink);

    FilterGraphPtr m_graph;
    AVFilterContext* m_source = nullptr;
    AVFilterContext* m_sink = nullptr;
    FramePtr m_frame = makeFrame();
    // Video only: where the last picture pushed ends, in the input's time base, or none yet.
    std::optional<VideoShape> m_video;
    int64_t m_videoEnd = AV_NOPTS_VALUE;
};

// The "buffer" source's arguments for frames of `shape`, for graphs built outside FilterChain
// (two inputs).
std::string videoSourceArguments(const VideoShape& shape);

// Where `frame` (a picture with pts in `shape`'s time base) ends on the timeline: its pts plus
// its duration, or one frame interval of `shape`'s rate when the packet gave none. Ending a
// video input at that time, not at the last pts, lets filters that resample time ("fps") show
// the last picture for as long as it lasts: a one-frame clip still gives a frame.
int64_t videoFrameEnd(const AVFrame& frame, const VideoShape& shape);

// Throws "Can't read this file" when a libavfilter step failed (`result` < 0), with the
// library's reason and `what` in the log: a chain fails on what the file holds (frames that
// change shape mid-stream, sizes a filter refuses) as often as on a mistake here.
void requireFilterStep(int result, const char* what);

// Hands every frame the buffer sink `output` has ready to `sink`, through `scratch`.
void drainFilterOutput(AVFilterContext& output, AVFrame& scratch, const FilterChain::FrameSink& sink);

// "stereo", "5.1(side)", or "4 channels" for a layout without a name.
std::string channelLayoutName(const AVChannelLayout& layout);

}  // namespace wendrel::media
