#pragma once

#include "operations/prompt/PromptRequest.h"
#include "operations/settings/VideoCompressionSettings.h"

namespace wendrel::media {

// The questions video "Compress" asks before it runs, opening with `startingValues`: by
// quality (a level) or to a file size, the largest height and the codec. Field keys are
// VideoCompressionSettings' JSON keys, so the answers are the record to run with and to store.
PromptRequest videoCompressionSettingsView(const VideoCompressionSettings& startingValues, qsizetype fileCount);

}  // namespace wendrel::media
