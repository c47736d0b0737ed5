#pragma once

extern "C" {
#include <libavutil/frame.h>
}

#include <cstddef>

namespace wendrel::media {

// The largest absolute sample of `frame` over all its channels, as the sample would read in
// 32-bit float (integers scaled by 1/2^(bits-1), unsigned 8-bit centred first), without
// converting the frame: integer formats are scanned as integers, so the analysis of a PCM or
// lossless file costs one pass over its memory. Samples that are not finite numbers are left
// out. Zero for a format that isn't audio.
float framePeak(const AVFrame& frame);

// The largest absolute finite value of `count` floats.
float floatPeak(const float* samples, std::size_t count);

// Multiplies `count` floats by `gain` and clamps them to [-1, 1]; what isn't a number becomes
// silence, so a damaged float source can't make an encoder misbehave.
void applyGain(float* samples, std::size_t count, float gain);

}  // namespace wendrel::media
