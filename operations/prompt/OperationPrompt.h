#pragma once

#include "PromptRequest.h"

#include <QJsonObject>
#include <QStringList>

#include <functional>

namespace wendrel {

// What an entry asks before it runs, declared with the entry. The answers the user confirms
// reach the operation's body through OperationContext::answers().
struct OperationPrompt {
    // The questions for these files, starting from what the user chose last time. `paths` may
    // be empty when only the fields matter (help texts, lists of options).
    std::function<PromptRequest(const QStringList& paths)> request;

    // Told the complete, checked answers when the user confirms, so they can be the starting
    // values next time. May be empty: the answers then serve one job (a password).
    std::function<void(const QJsonObject& answers)> remember;
};

}  // namespace wendrel
