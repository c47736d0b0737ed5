#pragma once

#include "media/ffmpeg/FilterChain.h"

#include <string>

namespace wendrel::media {

// A filter graph with two inputs: the movie's frames, shaped by `pictureFilters`, and one
// palette frame that `paletteUse` maps every picture onto. The palette comes from a first pass
// over the file, so no picture is held back waiting for it: frames flow through one by one.
class PaletteMapper {
public:
    using FrameSink = FilterChain::FrameSink;

    // Throws "Can't read this file" when the graph can't be built for these frames.
    PaletteMapper(const VideoShape& frames, const AVFrame& palette, const std::string& pictureFilters,
                  const std::string& paletteUse);

    // Feeds a frame (nullptr marks the end) and hands every mapped frame to `sink`.
    void push(AVFrame* frame, const FrameSink& sink);

    AVRational outputTimeBase() const;

private:
    FilterGraphPtr m_graph;
    AVFilterContext* m_frames = nullptr;
    AVFilterContext* m_sink = nullptr;
    FramePtr m_frame = makeFrame();
    VideoShape m_shape;
    int64_t m_end = AV_NOPTS_VALUE;  // where the last picture pushed ends
};

}  // namespace wendrel::media
