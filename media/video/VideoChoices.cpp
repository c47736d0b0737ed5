#include "VideoChoices.h"

#include <algorithm>

namespace wendrel::media {

int crfFor(FormatSettings::VideoQuality quality)
{
    switch (quality) {
    case FormatSettings::VideoQuality::maximum: return 18;
    case FormatSettings::VideoQuality::balanced: return 23;
    case FormatSettings::VideoQuality::smaller: return 28;
    }
    return 23;
}

MovieEncoding conversionEncoding(const FormatSettings& settings, MovieContainer container)
{
    return {.container = container,
            .codec = VideoCodec::h264,
            .crf = crfFor(settings.videoQuality),
            .maxHeight = std::max(0, settings.videoMaxHeight),
            .audioBitsPerSecond = std::clamp(settings.audioBitrate, 32, 512) * 1000};
}

}  // namespace wendrel::media
