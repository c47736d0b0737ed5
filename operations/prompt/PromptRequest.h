#pragma once

#include <QJsonObject>
#include <QJsonValue>
#include <QList>
#include <QString>
#include <QStringList>

#include <optional>

namespace wendrel {

// One of the values a choice field offers.
struct PromptChoice {
    QJsonValue value;       // what the answer holds: "targetSize", 1920
    QString title;          // what the user reads: "To file size"
    QStringList aliases{};  // further spellings a person may type: "size"
};

// Shows a field only while another field holds one of `values`.
struct PromptCondition {
    QString key;
    QList<QJsonValue> values;
};

// One question of a prompt. Its answer is kept under `key`; every kind of field has a label,
// the command-line option that answers it and the value it starts with. Only the members of
// its own kind matter; the others keep their defaults.
struct PromptField {
    enum class Kind {
        choice,    // one of `choices` (and, with acceptsOtherNumbers, a whole number in range)
        number,    // a number from `minimum` to `maximum`, followed by `unit`
        slider,    // a number from `minimum` to `maximum` in steps of `step`, named by `valueFormat`
        toggle,    // on or off
        text,      // one line of text
        password,  // one line of text that is never shown, echoed or trimmed
        folder,    // the absolute path of a folder
    };
    // Segmented: a few short choices side by side, standing without their label in a dialog.
    enum class ChoiceStyle { segmented, menu };

    Kind kind = Kind::text;
    QString key{};            // "targetMB": the answer's key
    QString label{};          // "Size"
    QString option{};         // the command-line option, without dashes: "target-mb"
    QJsonValue value{};       // the starting value

    double minimum = 0;       // number, slider, and the other numbers of a choice
    double maximum = 0;
    int decimals = 0;         // number: digits after the point an editor shows
    double step = 1;          // slider: the grid of its values; number: what an arrow press adds
    QString unit{};           // number: the words after the field, "MB or less"; choice: of other numbers, "px"
    QString valueFormat{};    // slider: its live label, %1 the whole value: "Quality %1%"

    QList<PromptChoice> choices{};
    ChoiceStyle choiceStyle = ChoiceStyle::menu;
    bool acceptsOtherNumbers = false;

    QString placeholder{};    // text, password, folder: shown while the field is empty
    bool required = false;    // text, password, folder: an empty answer is refused
    // password: typed a second time, blind, and taken only when both agree. A password that
    // locks a file must be the one the user meant; a command-line option is typed once.
    bool confirm = false;

    QString caption{};        // a line of explanation under the field
    QString captionWhenOn{};  // toggle: stands instead of `caption` while the toggle is on

    std::optional<PromptCondition> shownWhen{};
};

// What an operation asks before it runs, built for the files in hand: a title, an optional
// line of explanation, the fields in order, and the texts of the two buttons.
struct PromptRequest {
    QString title;            // "Compress"
    QString message{};        // "Compress 3 PDFs"; may be empty
    QList<PromptField> fields{};
    QString confirmText{};    // "Compress 3 images"
    QString cancelText{};     // "Cancel"

    // The field answered under `key`, or null.
    const PromptField* field(const QString& key) const;

    // The field answered by the command-line option `option` (without dashes), or null.
    const PromptField* fieldForOption(const QString& option) const;

    // Every field's starting value under its key: the answers when the user changes nothing.
    QJsonObject startingAnswers() const;

    // Whether `field` is shown while the answers are `answers`: its condition holds, and so
    // does the condition of the field that condition looks at, and so on up the chain.
    bool isShown(const PromptField& field, const QJsonObject& answers) const;
};

// A number the way people write it: 1, 0.5, 1920, never 1.00 or 1e+03.
QString displayNumber(double value);

// The slider's live label for a value: "Smaller by 50%".
QString sliderLabel(const PromptField& field, double value);

// How a choice field's values read, in order: "targetSize", "reduceBy", "quality".
QStringList choiceValues(const PromptField& field);

// The title of a choice's value: the matching choice's title, or for another number, the
// number followed by the unit ("1600 px"). Empty when the value fits neither.
QString choiceTitle(const PromptField& field, const QJsonValue& value);

// The caption under a field while its value is `value`; a toggle's follows its state.
QString captionFor(const PromptField& field, const QJsonValue& value);

// How the value reads in help texts and on the terminal: a choice's own value ("targetSize",
// 1920), a number, "on"/"off", the text itself; a password reads as nothing.
QString plainValue(const PromptField& field, const QJsonValue& value);

// The request as JSON, for scripts: title, message, buttons and every field with its kind,
// option, starting value, limits, choices and condition.
QJsonObject toJson(const PromptRequest& request);

}  // namespace wendrel
