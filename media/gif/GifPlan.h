#pragma once

extern "C" {
#include <libavutil/rational.h>
}

#include <string>

namespace wendrel::media {

// How a movie's picture becomes the frames of an animated GIF: sizes, turns, frame rate and the
// filters that do it. Arithmetic only, so every rule can be checked without a file.

// The longest stretch of the movie a GIF shows, from its start.
inline constexpr double gifLongestSeconds = 30.0;

// Quarter turns clockwise (0 to 3) that show the picture upright, from the display matrix's
// rotation as the libraries read it (degrees counterclockwise). GIF can't carry a rotation, so
// the pixels themselves are turned. Angles between quarter turns snap to the nearest.
int clockwiseQuarterTurns(double counterclockwiseDegrees);

// The frame rate used for a stored setting: GIF delays count hundredths of a second and viewers
// slow anything faster than 50 frames a second down, so settings are held to 1 to 50.
int gifFrameRate(int setting);

struct GifSize {
    int width = 0;
    int height = 0;
    friend bool operator==(const GifSize&, const GifSize&) = default;
};

// The picture as it is shown: stored pixels stretched by their sample aspect ratio (0/1 when
// unknown, taken as square) and turned by `quarterTurns`; then at most `maxWidth` wide with
// its aspect kept, never enlarged (`maxWidth` <= 0: no limit). Never below one pixel.
GifSize gifSize(int storedWidth, int storedHeight, AVRational sampleAspect, int quarterTurns, int maxWidth);

struct GifPlan {
    int framesPerSecond = 15;
    int quarterTurns = 0;
    GifSize size;

    // Decoded frames to the GIF's frames, in colour: fewer frames first (the cheapest cut),
    // scaled to size, then turned upright, ready for the palette filters.
    std::string pictureFilters() const;
    // The first pass: those frames summed into one palette of the whole clip.
    std::string paletteFilters() const;
    // The second pass: every frame mapped onto that palette with dithering, re-encoding only
    // the rectangle that changed from the previous frame so still areas cost nothing.
    static std::string paletteUseFilter();
};

// The plan for a picture of this stored size and sample aspect ratio, with these settings.
GifPlan gifPlan(int storedWidth, int storedHeight, AVRational sampleAspect, double counterclockwiseDegrees,
                int frameRateSetting, int maxWidthSetting);

}  // namespace wendrel::media
