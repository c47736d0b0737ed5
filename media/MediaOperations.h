#pragma once

namespace wendrel {

class OperationCatalog;

// Adds the audio and video entries: conversions on the convert ring, compression, mute,
// soundtrack extraction and normalisation on the tools ring.
void registerMediaOperations(OperationCatalog& catalog);

}  // namespace wendrel
