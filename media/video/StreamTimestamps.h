#pragma once

#include <cstdint>
#include <optional>

namespace wendrel::media {

// Times of one stream as the result carries them: moved so the file starts at zero (every
// stream by the same amount, so sound and picture stay in step) and repaired where a damaged
// or careless source breaks what a muxer needs: decoding times that only grow and
// presentation times never before them.
class CopiedTimestamps {
public:
    // `offset`: the file's start, in this stream's time base.
    explicit CopiedTimestamps(int64_t offset) : m_offset(offset) {}

    struct Times {
        int64_t pts;
        int64_t dts;
    };
    // `missing` marks an unknown time (the libraries' AV_NOPTS_VALUE).
    Times next(int64_t pts, int64_t dts, int64_t duration, int64_t missing);

private:
    int64_t m_offset;
    std::optional<int64_t> m_lastDts;
};

// The same for decoded pictures on their way to an encoder: each must come after the one
// before. A picture without a time follows its predecessor by `step`; one that doesn't come
// later is a duplicate and is left out, as players skip it.
class FrameTimestamps {
public:
    FrameTimestamps(int64_t offset, int64_t step) : m_offset(offset), m_step(step > 0 ? step : 1) {}

    // The time to encode the picture at, or nothing when it is to be left out.
    std::optional<int64_t> next(int64_t pts, int64_t missing);

private:
    int64_t m_offset;
    int64_t m_step;
    std::optional<int64_t> m_last;
};

}  // namespace wendrel::media
