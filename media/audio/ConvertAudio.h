#pragma once

#include "AudioFormatChoice.h"
#include "operations/OperationContext.h"

namespace wendrel::media {

// The soundtrack of `path` (an audio file, or a movie's first audio track) as a new file in
// `container`, named like the source with `extension`, its tags and cover art carried over
// where the container holds them.
ProducedFile convertAudio(const QString& path, const OperationContext& context, AudioContainer container,
                          const QString& extension);

}  // namespace wendrel::media
