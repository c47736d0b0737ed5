#pragma once

#include "operations/prompt/PromptRequest.h"

#include <QJsonObject>
#include <QStringList>

namespace wendrel::test {

// What a person sees of an entry's sheet while the answers are `answers`, top to bottom: each
// shown field's label, then its choices, unit or caption, as "Label: choice | choice | unit".
QStringList shownFields(const PromptRequest& request, const QJsonObject& answers);

}  // namespace wendrel::test
