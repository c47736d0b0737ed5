#pragma once

namespace wendrel {

class OperationCatalog;

// Adds "SRT", "VTT" and "TXT" to the convert ring for SubRip and WebVTT files: each input is
// read into cues and written in the chosen format next to it, named after the input.
void registerSubtitleOperations(OperationCatalog& catalog);

}  // namespace wendrel
