#pragma once

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavfilter/avfilter.h>
#include <libavformat/avformat.h>
#include <libavutil/frame.h>
}

#include <QString>

#include <memory>

namespace wendrel::media {

// Owning handles for the FFmpeg objects the media layer uses, so every early exit (an error, a
// cancellation) frees them.
struct CodecContextFree {
    void operator()(AVCodecContext* context) const { avcodec_free_context(&context); }
};
struct FrameFree {
    void operator()(AVFrame* frame) const { av_frame_free(&frame); }
};
struct PacketFree {
    void operator()(AVPacket* packet) const { av_packet_free(&packet); }
};
struct FilterGraphFree {
    void operator()(AVFilterGraph* graph) const { avfilter_graph_free(&graph); }
};
struct InputFormatClose {
    void operator()(AVFormatContext* format) const { avformat_close_input(&format); }
};

using CodecContextPtr = std::unique_ptr<AVCodecContext, CodecContextFree>;
using FramePtr = std::unique_ptr<AVFrame, FrameFree>;
using PacketPtr = std::unique_ptr<AVPacket, PacketFree>;
using FilterGraphPtr = std::unique_ptr<AVFilterGraph, FilterGraphFree>;
using InputFormatPtr = std::unique_ptr<AVFormatContext, InputFormatClose>;

// Hands `frame` (or `packet`) to `sink`, then empties it for the next one, whether or not
// the sink throws: the receive loops of decoders, encoders and filters all end this way.
template <typename Sink>
void handOver(AVFrame& frame, const Sink& sink)
{
    struct Emptied {
        AVFrame& frame;
        ~Emptied() { av_frame_unref(&frame); }
    } emptied{frame};
    sink(frame);
}
template <typename Sink>
void handOver(AVPacket& packet, const Sink& sink)
{
    struct Emptied {
        AVPacket& packet;
        ~Emptied() { av_packet_unref(&packet); }
    } emptied{packet};
    sink(packet);
}

// Allocations that can't fail quietly: they throw std::bad_alloc like `new`.
FramePtr makeFrame();
PacketPtr makePacket();

// FFmpeg's own wording for an error code ("Invalid data found when processing input").
QString avErrorText(int code);

// Routes FFmpeg's messages into the "wendrel.media" log instead of the terminal. Idempotent;
// every entry point of the layer calls it.
void startMedia();

}  // namespace wendrel::media
