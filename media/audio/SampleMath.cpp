#include "SampleMath.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstring>

namespace wendrel::media {

namespace {

// These loops are the whole cost of the analysis pass. They are written so the compiler turns
// them into vector code (plain reductions, no calls, no branches): see this file's compile
// options in media/CMakeLists.txt.

template <typename Sample>
void integerRange(const Sample* samples, std::size_t count, Sample& lowest, Sample& highest)
{
    Sample low = lowest;
    Sample high = highest;
    for (std::size_t i = 0; i < count; ++i) {
        const Sample value = samples[i];
        low = value < low ? value : low;
        high = value > high ? value : high;
    }
    lowest = low;
    highest = high;
}

// The largest magnitude over the frame's planes, for integer samples whose zero is `centre`,
// scaled to float by `scale`.
template <typename Sample>
float integerPeak(const AVFrame& frame, int planes, std::size_t perPlane, int64_t centre, float scale)
{
    Sample lowest = static_cast<Sample>(centre);
    Sample highest = static_cast<Sample>(centre);
    for (int plane = 0; plane < planes; ++plane)
        integerRange(reinterpret_cast<const Sample*>(frame.extended_data[plane]), perPlane, lowest, highest);
    // In double: exact for every width but 64-bit, where a rounding in the last place is moot.
    const double magnitude = std::max(double(highest) - double(centre), double(centre) - double(lowest));
    return float(magnitude) * scale;
}

float doublePeak(const AVFrame& frame, int planes, std::size_t perPlane)
{
    double peak = 0;
    for (int plane = 0; plane < planes; ++plane) {
        const double* samples = reinterpret_cast<const double*>(frame.extended_data[plane]);
        for (std::size_t i = 0; i < perPlane; ++i) {
            const double magnitude = std::fabs(samples[i]);
            if (std::isfinite(magnitude) && magnitude > peak)
                peak = magnitude;
        }
    }
    return float(peak);
}

}  // namespace

float floatPeak(const float* samples, std::size_t count)
{
    // On the bit patterns: without its sign a finite float orders like the integer of its bits,
    // and infinities and NaNs lie above the largest finite one, so they are dropped by one
    // comparison. Integer maxima vectorise where float ones (NaN rules) don't.
    constexpr int32_t magnitudeMask = 0x7fffffff;
    constexpr int32_t infinityBits = 0x7f800000;
    int32_t largest = 0;
    for (std::size_t i = 0; i < count; ++i) {
        int32_t bits;
        std::memcpy(&bits, samples + i, sizeof bits);
        bits &= magnitudeMask;
        bits = bits < infinityBits ? bits : 0;
        largest = bits > largest ? bits : largest;
    }
    float peak;
    std::memcpy(&peak, &largest, sizeof peak);
    return peak;
}

float framePeak(const AVFrame& frame)
{
    const auto format = AVSampleFormat(frame.format);
    const int channels = frame.ch_layout.nb_channels;
    if (frame.nb_samples <= 0 || channels <= 0)
        return 0;
    const bool planar = av_sample_fmt_is_planar(format);
    const int planes = planar ? channels : 1;
    const std::size_t perPlane = std::size_t(frame.nb_samples) * std::size_t(planar ? 1 : channels);

    switch (av_get_packed_sample_fmt(format)) {
    case AV_SAMPLE_FMT_U8:
        return integerPeak<uint8_t>(frame, planes, perPlane, 0x80, 1.0f / 128);
    case AV_SAMPLE_FMT_S16:
        return integerPeak<int16_t>(frame, planes, perPlane, 0, 1.0f / 32768);
    case AV_SAMPLE_FMT_S32:
        return integerPeak<int32_t>(frame, planes, perPlane, 0, 1.0f / 2147483648.0f);
    case AV_SAMPLE_FMT_S64:
        return integerPeak<int64_t>(frame, planes, perPlane, 0, float(1.0 / 9223372036854775808.0));
    case AV_SAMPLE_FMT_FLT: {
        float peak = 0;
        for (int plane = 0; plane < planes; ++plane)
            peak = std::max(peak, floatPeak(reinterpret_cast<const float*>(frame.extended_data[plane]), perPlane));
        return peak;
    }
    case AV_SAMPLE_FMT_DBL:
        return doublePeak(frame, planes, perPlane);
    default:
        return 0;
    }
}

void applyGain(float* samples, std::size_t count, float gain)
{
    for (std::size_t i = 0; i < count; ++i) {
        float value = samples[i] * gain;
        value = value > 1.0f ? 1.0f : value;
        value = value < -1.0f ? -1.0f : value;
        samples[i] = value == value ? value : 0.0f;  // NaN compares unequal to itself
    }
}

}  // namespace wendrel::media
