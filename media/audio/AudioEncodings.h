#pragma once

#include "AudioFormatChoice.h"
#include "media/ffmpeg/AudioEncodePipe.h"

namespace wendrel::media {

// How a result in `container` is encoded from frames shaped like `frames`, taken from a source
// whose samples are `depth`: AAC at the user's bit rate for M4A, PCM at the user's depth for
// WAV, AIFF and CAF, FLAC at the source's depth. The sample rate is the frames' own except
// where AAC can't take it.
AudioEncoding audioEncoding(AudioContainer container, const FormatSettings& settings, const AudioShape& frames,
                            SampleDepth depth);

// A layout `codec` takes for `input`: the same when it can, else one with as many channels,
// else stereo (mono stays mono), which the pipe's resampler mixes down to.
AVChannelLayout encoderLayout(const AVCodec& codec, const AVChannelLayout& input);

}  // namespace wendrel::media
