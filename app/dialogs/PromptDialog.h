#pragma once

#include "operations/prompt/PromptRequest.h"

#include <QDialog>
#include <QJsonObject>

#include <functional>
#include <optional>
#include <vector>

class QDialogButtonBox;
class QFormLayout;
class QLabel;
class QLineEdit;
class QPushButton;

namespace wendrel {

// Asks the questions of `request` in a modal dialog over `parent` (which may be null) and
// waits for the answer. Returns every field's value under its key when the user confirms,
// nothing when they cancel (Cancel, Escape or closing the window). Pass it to
// askBeforeRunning() as the way to ask:
//
//     askBeforeRunning(*entry, files, [view](const PromptRequest& request) { return askUser(request, view); });
std::optional<QJsonObject> askUser(const PromptRequest& request, QWidget* parent = nullptr);

// The dialog behind askUser(): a heading, the fields in a form (each shown while its condition
// holds), and Cancel beside the default confirm button, which stays disabled while a shown
// field holds something it doesn't accept, or a password to confirm differs from its second line.
class PromptDialog : public QDialog {
    Q_OBJECT

public:
    explicit PromptDialog(PromptRequest request, QWidget* parent = nullptr);
    ~PromptDialog() override;

    // Every shown field's value, and every hidden field's as long as it is valid; a hidden
    // field left invalid is missing, so it keeps its starting value.
    QJsonObject answers() const;

    // The widget that edits the field under `key`, named after the key; null for no such field.
    QWidget* editor(const QString& key) const;

    QPushButton* confirmButton() const;
    QPushButton* cancelButton() const;

private:
    struct Field {
        PromptField field;
        QWidget* row = nullptr;      // the editor with its caption, in the form's field column
        QLabel* label = nullptr;     // in the label column; a slider's shows its value
        QLabel* caption = nullptr;
        QWidget* editor = nullptr;
        QLineEdit* confirmation = nullptr;  // a password's second line, when it must be typed twice
        std::function<QJsonValue()> value{};
    };

    Field makeField(const PromptField& field);
    void addToForm(Field& field);
    // One width for every label and one height for every editor, whichever rows are shown, so
    // that switching modes moves nothing.
    void evenOutRows();
    // Shows and hides the fields for the current answers and brings captions, slider labels
    // and the confirm button up to date.
    void refresh();

    PromptRequest m_request;
    std::vector<Field> m_fields;
    QFormLayout* m_form = nullptr;
    QDialogButtonBox* m_buttons = nullptr;
    QPushButton* m_confirm = nullptr;
    QPushButton* m_cancel = nullptr;
};

}  // namespace wendrel
