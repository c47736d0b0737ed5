#pragma once

#include "operations/prompt/PromptRequest.h"
#include "operations/settings/PDFCompressionSettings.h"

namespace wendrel {

// The questions the PDF "Compress" asks before it runs, opening with `startingValues`: by
// quality (a level) or to a file size, and whether pages are saved as images. Field keys are
// PDFCompressionSettings' JSON keys, so the answers are the record to run with and to store.
PromptRequest pdfCompressionSettingsView(const PDFCompressionSettings& startingValues, qsizetype fileCount);

}  // namespace wendrel
