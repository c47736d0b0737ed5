#pragma once

namespace wendrel {

class OperationCatalog;

// The audio entries: M4A, WAV, AIFF and FLAC on the convert ring, Normalize on the tools ring.
void registerAudioOperations(OperationCatalog& catalog);

}  // namespace wendrel
