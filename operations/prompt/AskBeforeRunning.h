#pragma once

#include "PromptRequest.h"

#include <QJsonObject>
#include <QStringList>

#include <functional>
#include <optional>

namespace wendrel {

class FileOperation;

// Puts a prompt to the user (a dialog, a terminal) and returns their answers, or nothing when
// they cancel.
using PromptAsker = std::function<std::optional<QJsonObject>(const PromptRequest& request)>;

// The answers a job of `entry` on `paths` runs with, asked through `ask` when the entry has a
// prompt. Confirmed answers are completed, checked and given to the entry to remember before
// they are returned. Nothing when the user cancels, or when what came back can't be used: the
// caller must then run nothing. An entry that doesn't ask gets an empty object, unasked.
std::optional<QJsonObject> askBeforeRunning(const FileOperation& entry, const QStringList& paths,
                                            const PromptAsker& ask);

}  // namespace wendrel
