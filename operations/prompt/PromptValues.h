#pragma once

#include "PromptRequest.h"

#include <QJsonObject>
#include <QJsonValue>
#include <QList>
#include <QString>

#include <optional>
#include <utility>

namespace wendrel {

// Every rule about what a field accepts lives here, so the dialog, the terminal and the
// command-line options agree on it.

// The value of what a person typed for `field`, or nothing when the field doesn't take it.
// Choices match their value, title or an alias, ignoring case, spaces, '-' and '_' ("size",
// "Target-Size"); numbers are written with a point; toggles take yes/no, on/off, true/false
// and 1/0. A folder must already be an absolute path: making it one is the caller's business.
std::optional<QJsonValue> readFieldValue(const PromptField& field, const QString& text);

// The value itself when it is a valid answer to `field` (type, limits, step, choices,
// required), otherwise nothing.
std::optional<QJsonValue> checkFieldValue(const PromptField& field, const QJsonValue& value);

// What `field` accepts, to finish the sentence "expected …": "targetSize, reduceBy or
// quality", "a whole number from 1 to 100".
QString acceptedValues(const PromptField& field);

// Answers made whole and checked, or the first reason they can't be used.
struct CheckedAnswers {
    QJsonObject answers;  // every field's key, hidden fields included
    QString problem;      // one sentence; empty when the answers are good

    bool isValid() const { return problem.isEmpty(); }
};

// The answers of a confirmed prompt: the starting answers with `given` put over them. Every
// given value is checked, and a key that names no field is refused.
CheckedAnswers completeAnswers(const PromptRequest& request, const QJsonObject& given);

// The answers that command-line options give (option name without dashes, the text after
// it), over the starting answers. A field that its condition would hide switches that
// condition on when nobody chose otherwise, so "--quality 60" alone picks the mode that
// shows Quality; an explicit contradiction is refused.
CheckedAnswers answersFromOptions(const PromptRequest& request,
                                  const QList<std::pair<QString, QString>>& options);

}  // namespace wendrel
