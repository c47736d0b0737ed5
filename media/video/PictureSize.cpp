#include "PictureSize.h"

extern "C" {
#include <libavutil/display.h>
}

#include <algorithm>
#include <cmath>

namespace wendrel::media {

namespace {

int evenAtLeastTwo(double value) { return std::max(2, int(std::floor(value)) & ~1); }

}  // namespace

int quarterTurns(const int32_t* displayMatrix)
{
    if (!displayMatrix)
        return 0;
    const double degrees = av_display_rotation_get(displayMatrix);
    if (std::isnan(degrees))
        return 0;
    const int turns = int(std::lround(degrees / 90.0)) % 4;
    return turns < 0 ? turns + 4 : turns;
}

double displayedHeight(PictureSize stored, AVRational sampleAspect, int quarterTurns)
{
    const double aspect = sampleAspect.num > 0 && sampleAspect.den > 0 ? av_q2d(sampleAspect) : 1.0;
    return quarterTurns % 2 == 1 ? stored.width * aspect : stored.height;
}

bool exceedsHeight(PictureSize stored, AVRational sampleAspect, int quarterTurns, int maxDisplayedHeight)
{
    return maxDisplayedHeight > 0 && displayedHeight(stored, sampleAspect, quarterTurns) > maxDisplayedHeight + 0.5;
}

PictureSize encodedSize(PictureSize stored, AVRational sampleAspect, int quarterTurns, int maxDisplayedHeight)
{
    double scale = 1.0;
    if (exceedsHeight(stored, sampleAspect, quarterTurns, maxDisplayedHeight))
        scale = maxDisplayedHeight / displayedHeight(stored, sampleAspect, quarterTurns);
    // A rounding error must not take 1280 x 720 to 1278 x 718.
    return {evenAtLeastTwo(stored.width * scale + 1e-6), evenAtLeastTwo(stored.height * scale + 1e-6)};
}

}  // namespace wendrel::media
