#pragma once

#include "operations/OperationContext.h"
#include "operations/prompt/OperationPrompt.h"

namespace wendrel {

// The watermark's one question, "Watermark text" (key and option "text"), starting with the
// last text confirmed, or "CONFIDENTIAL" the first time.
OperationPrompt watermarkPrompt();

// The text a watermark job prints: the confirmed answer, else the remembered text.
QString watermarkTextForJob(const OperationContext& context);

}  // namespace wendrel
