#pragma once

#include "MovieWriter.h"
#include "operations/settings/FormatSettings.h"

namespace wendrel::media {

// The constant quality each setting stands for. 18 looks the same as the source on nearly all
// footage; 23 is the encoder's own default, its authors' balance; every 6 steps up about
// halves the size, so 28 is roughly half of that.
int crfFor(FormatSettings::VideoQuality quality);

// How the conversions to MP4 and QuickTime write a movie under the user's settings: H.264 and
// AAC, streams copied when they fit.
MovieEncoding conversionEncoding(const FormatSettings& settings, MovieContainer container);

}  // namespace wendrel::media
