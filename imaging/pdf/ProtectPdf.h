#pragma once

#include "operations/prompt/PromptRequest.h"

#include <QStringList>

namespace wendrel {

class OperationCatalog;

// The question "pdf.password" asks for `paths`: the password, typed twice.
PromptRequest passwordPrompt(const QStringList& paths);

// "pdf.password": the PDF locked with the password the user gives, as "<name> Protected.pdf".
void registerProtectPdf(OperationCatalog& catalog);

}  // namespace wendrel
