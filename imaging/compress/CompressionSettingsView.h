#pragma once

#include "operations/prompt/PromptRequest.h"
#include "operations/settings/CompressionSettings.h"

namespace wendrel {

// The questions "Compress" asks before it runs, opening with `startingValues`: the target
// (a file size, a percentage or a quality), the longest side and the format. Field keys are
// CompressionSettings' JSON keys, so the answers are the record to run with and to store.
PromptRequest compressionSettingsView(const CompressionSettings& startingValues, qsizetype fileCount);

}  // namespace wendrel
