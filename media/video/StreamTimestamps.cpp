#include "StreamTimestamps.h"

#include <algorithm>

namespace wendrel::media {

CopiedTimestamps::Times CopiedTimestamps::next(int64_t pts, int64_t dts, int64_t duration, int64_t missing)
{
    if (pts != missing)
        pts -= m_offset;
    if (dts != missing)
        dts -= m_offset;
    if (dts == missing)
        dts = pts != missing ? pts : (m_lastDts ? *m_lastDts + std::max<int64_t>(duration, 1) : 0);
    if (m_lastDts && dts <= *m_lastDts)
        dts = *m_lastDts + 1;
    if (pts == missing || pts < dts)
        pts = dts;
    m_lastDts = dts;
    return {pts, dts};
}

std::optional<int64_t> FrameTimestamps::next(int64_t pts, int64_t missing)
{
    if (pts == missing)
        pts = m_last ? *m_last + m_step : 0;
    else
        pts -= m_offset;
    if (m_last && pts <= *m_last)
        return std::nullopt;
    m_last = pts;
    return pts;
}

}  // namespace wendrel::media
