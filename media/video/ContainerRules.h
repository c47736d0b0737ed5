#pragma once

#include "MovieWriter.h"

extern "C" {
#include <libavcodec/codec_id.h>
}

#include <cstdint>

namespace wendrel::media {

// Whether a stream of `codec` can go into `container` unchanged and still play everywhere the
// container plays. The lists are narrower than what the muxer accepts: a codec that only some
// players read in that container (FLAC or Opus in MP4) is re-encoded instead.
bool containerTakes(MovieContainer container, AVCodecID codec);

// The muxer that writes `container`.
const char* muxerName(MovieContainer container);

// The sample entry to write for `codec`, or 0 to let the muxer choose. HEVC is marked "hvc1"
// (parameter sets in the header), the only form some players accept.
uint32_t sampleEntryTag(AVCodecID codec);

// The file extension of `container`, without the dot.
const char* extensionOf(MovieContainer container);

}  // namespace wendrel::media
