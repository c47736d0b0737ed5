#pragma once

#include "operations/prompt/PromptRequest.h"

#include <QJsonObject>

#include <optional>
#include <unistd.h>

namespace wendrel {

// Asks the questions of a prompt one by one on a terminal, the way the dialog would: only the
// fields that are shown for the answers so far, each with its current value, which a bare
// Enter keeps. A wrong answer is explained and asked again; a password is read without
// echo, and one that must be confirmed is read twice until both agree. Ends with the confirm
// button's question.
class TerminalPrompt {
public:
    // Questions go to `outputFd`, answers come from `inputFd`, a line at a time.
    explicit TerminalPrompt(int inputFd = STDIN_FILENO, int outputFd = STDERR_FILENO);

    // The answers, every field included; nothing when the user declines or input ends.
    std::optional<QJsonObject> ask(const PromptRequest& request);

private:
    // One question until it gets an answer that fits; nothing when input ends.
    std::optional<QJsonValue> askField(const PromptField& field, const QJsonValue& current);
    std::optional<QString> readLine(bool echo);
    void write(const QString& text);

    int m_input;
    int m_output;
};

}  // namespace wendrel
