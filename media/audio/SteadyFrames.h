#pragma once

#include "media/ffmpeg/FilterChain.h"

#include <memory>
#include <string>

namespace wendrel::media {

// A filter chain that takes frames whose shape changes along the way: an MP3 joined from parts
// at 44.1 and 48 kHz, a broadcast whose sound switches between stereo and 5.1. libavfilter
// refuses such frames, so each new shape gets a chain of its own, the previous one drained
// first; every chain ends in the same rate, format and layout (those of the first frames, or
// what `filters` sets), so what comes out never changes shape.
class SteadyFrames {
public:
    // `filters` runs on the first frames' shape as given ("aresample=48000,aformat=
    // sample_fmts=fltp"); later chains add the conversion to that output's shape.
    explicit SteadyFrames(std::string filters);
    ~SteadyFrames();

    // Feeds `frame`, shaped like `shape`; nullptr ends the stream.
    void push(AVFrame* frame, const AudioShape& shape, const FilterChain::FrameSink& sink);

    // What comes out, once the first frame went in.
    AudioShape outputShape() const { return m_output; }

private:
    std::string m_filters;
    std::unique_ptr<FilterChain> m_chain;
    AudioShape m_input;
    AudioShape m_output;
};

// Whether frames of these shapes can share one chain: same rate, format and layout.
bool sameFrames(const AudioShape& a, const AudioShape& b);

}  // namespace wendrel::media
