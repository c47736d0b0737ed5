#pragma once

extern "C" {
#include <libavutil/rational.h>
}

#include <cstdint>

namespace wendrel::media {

struct PictureSize {
    int width = 0;
    int height = 0;
    friend bool operator==(const PictureSize&, const PictureSize&) = default;
};

// Quarter turns (0 to 3, counter-clockwise) a player applies to the stored picture, from the
// stream's display matrix; 0 without one. A matrix that isn't a quarter turn rounds to the
// nearest one.
int quarterTurns(const int32_t* displayMatrix);

// The height the viewer sees: a picture a player turns sideways shows its stored width
// (stretched by its pixel shape) as its height.
double displayedHeight(PictureSize stored, AVRational sampleAspect, int quarterTurns);

// The stored size to encode at so the displayed height stays within `maxDisplayedHeight`
// (0: no limit), the proportions kept. Never larger than the source, and even on both sides:
// 4:2:0 pictures share one colour sample between two rows and two columns.
PictureSize encodedSize(PictureSize stored, AVRational sampleAspect, int quarterTurns, int maxDisplayedHeight);

// Whether the picture is taller on screen than `maxDisplayedHeight` allows.
bool exceedsHeight(PictureSize stored, AVRational sampleAspect, int quarterTurns, int maxDisplayedHeight);

}  // namespace wendrel::media
