#pragma once

#include "AudioFormatChoice.h"
#include "media/ffmpeg/AudioEncodePipe.h"

namespace wendrel::media {

// How a result in `container` is encoded from frames shaped like `frames`, taken from a source
// whose samples are `depth`: AAC at the user's bit rate for M4A, PCM at the user's depth for
// WAV, AIFF and CAF, FLAC at the source's depth. The sample rate is the frames' own except
// where AAC can't take it; more channels than AAC and FLAC hold are mixed down to 7.1.
AudioEncoding audioEncoding(AudioContainer container, const FormatSettings& settings, const AudioShape& frames,
                            SampleDepth depth);


}  // namespace wendrel::media
