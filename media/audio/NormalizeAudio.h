#pragma once

#include "operations/OperationContext.h"

namespace wendrel::media {

// Peak normalisation: one gain for the whole file and every channel, raising or lowering it so
// its loudest sample lands at -1 dBFS. Two passes over the file, the second decoding again.
// The result keeps the source's container when it is uncompressed or lossless (WAV, AIFF,
// FLAC, CAF) and is AAC in M4A otherwise. Throws "The audio is silent" for silence.
ProducedFile normalizeAudio(const QString& path, const OperationContext& context);

}  // namespace wendrel::media
