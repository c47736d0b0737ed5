#include "PromptDialog.h"

#include "SegmentedControl.h"
#include "SwitchButton.h"
#include "operations/prompt/PromptValues.h"

#include <QComboBox>
#include <QCoreApplication>
#include <QDialogButtonBox>
#include <QDir>
#include <QDoubleSpinBox>
#include <QFileDialog>
#include <QFormLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QSlider>
#include <QVBoxLayout>

#include <algorithm>
#include <cmath>

namespace wendrel {

namespace {

constexpr int contentWidth = 412;  // at least; the dialog grows with its longest field
constexpr int captionWidth = 300;

QString translate(const char* text) { return QCoreApplication::translate("PromptDialog", text); }

// Where a value sits among the choices; the first choice when it is none of them.
int choiceIndex(const PromptField& field, const QJsonValue& value)
{
    for (int index = 0; index < field.choices.size(); ++index) {
        if (field.choices[index].value == value)
            return index;
    }
    return 0;
}

QLabel* captionLabel(QWidget* parent)
{
    auto* caption = new QLabel(parent);
    caption->setWordWrap(true);
    caption->setMinimumWidth(captionWidth);
    QFont font = caption->font();
    font.setPointSizeF(font.pointSizeF() * 0.92);
    caption->setFont(font);
    caption->setForegroundRole(QPalette::PlaceholderText);
    return caption;
}

// A widget holding `content` with the field's caption underneath.
QWidget* rowWith(QWidget* content, QLabel* caption, QWidget* parent)
{
    auto* row = new QWidget(parent);
    auto* layout = new QVBoxLayout(row);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(4);
    layout->addWidget(content);
    layout->addWidget(caption);
    return row;
}

// `editor` followed by `words` on one line ("1.00 MB or less"), kept at its natural width.
QWidget* withWordsAfter(QWidget* editor, const QString& words, QWidget* parent)
{
    auto* line = new QWidget(parent);
    auto* layout = new QHBoxLayout(line);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(8);
    layout->addWidget(editor);
    if (!words.isEmpty())
        layout->addWidget(new QLabel(words, line));
    layout->addStretch(1);
    line->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
    return line;
}

}  // namespace

std::optional<QJsonObject> askUser(const PromptRequest& request, QWidget* parent)
{
    PromptDialog dialog(request, parent);
    if (dialog.exec() != QDialog::Accepted)
        return std::nullopt;
    return dialog.answers();
}

PromptDialog::PromptDialog(PromptRequest request, QWidget* parent)
    : QDialog(parent), m_request(std::move(request))
{
    setWindowTitle(m_request.title);
    setModal(true);
    // Over a window that floats above the others, the question must float too.
    if (parent && parent->window()->windowFlags().testFlag(Qt::WindowStaysOnTopHint))
        setWindowFlag(Qt::WindowStaysOnTopHint);

    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(24, 20, 24, 18);
    layout->setSpacing(14);
    layout->setSizeConstraint(QLayout::SetFixedSize);

    auto* heading = new QLabel(m_request.title, this);
    heading->setMinimumWidth(contentWidth);
    QFont headingFont = heading->font();
    headingFont.setPointSizeF(headingFont.pointSizeF() * 1.25);
    headingFont.setWeight(QFont::DemiBold);
    heading->setFont(headingFont);
    layout->addWidget(heading);
    if (!m_request.message.isEmpty()) {
        auto* message = new QLabel(m_request.message, this);
        message->setWordWrap(true);
        layout->addWidget(message);
    }

    m_form = new QFormLayout;
    m_form->setLabelAlignment(Qt::AlignRight | Qt::AlignVCenter);
    m_form->setFormAlignment(Qt::AlignLeft | Qt::AlignTop);
    m_form->setFieldGrowthPolicy(QFormLayout::ExpandingFieldsGrow);
    m_form->setHorizontalSpacing(14);
    m_form->setVerticalSpacing(12);
    m_fields.reserve(size_t(m_request.fields.size()));
    for (const PromptField& field : std::as_const(m_request.fields)) {
        m_fields.push_back(makeField(field));
        addToForm(m_fields.back());
    }
    evenOutRows();
    layout->addLayout(m_form);
    layout->addSpacing(6);

    m_buttons = new QDialogButtonBox(this);
    m_cancel = m_buttons->addButton(m_request.cancelText.isEmpty() ? translate("Cancel") : m_request.cancelText,
                                    QDialogButtonBox::RejectRole);
    m_confirm = m_buttons->addButton(m_request.confirmText.isEmpty() ? translate("OK") : m_request.confirmText,
                                     QDialogButtonBox::AcceptRole);
    m_cancel->setAutoDefault(false);
    m_confirm->setDefault(true);
    connect(m_buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
    connect(m_buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    layout->addWidget(m_buttons);

    refresh();
    // Typing starts in the first text field; otherwise Return confirms straight away.
    QWidget* firstFocus = m_confirm;
    for (const Field& field : m_fields) {
        if (qobject_cast<QLineEdit*>(field.editor) && field.row->isVisibleTo(this)) {
            firstFocus = field.editor;
            break;
        }
    }
    firstFocus->setFocus(Qt::OtherFocusReason);
}

PromptDialog::~PromptDialog() = default;

PromptDialog::Field PromptDialog::makeField(const PromptField& field)
{
    Field made{field};
    const auto changed = [this] { refresh(); };

    switch (field.kind) {
    case PromptField::Kind::choice:
        if (field.choiceStyle == PromptField::ChoiceStyle::segmented) {
            QStringList titles;
            for (const PromptChoice& choice : field.choices)
                titles.append(choice.title);
            auto* segments = new SegmentedControl(titles, this);
            segments->setCurrentIndex(choiceIndex(field, field.value));
            connect(segments, &SegmentedControl::currentIndexChanged, this, changed);
            made.editor = segments;
            made.value = [segments, field] { return field.choices.value(segments->currentIndex()).value; };
        } else {
            auto* menu = new QComboBox(this);
            QList<QJsonValue> values;
            for (const PromptChoice& choice : field.choices) {
                menu->addItem(choice.title);
                values.append(choice.value);
            }
            // A stored size that isn't among the choices is offered as it is.
            if (!values.contains(field.value) && checkFieldValue(field, field.value)) {
                menu->addItem(choiceTitle(field, field.value));
                values.append(field.value);
            }
            menu->setCurrentIndex(std::max(0, int(values.indexOf(field.value))));
            connect(menu, &QComboBox::currentIndexChanged, this, changed);
            made.editor = menu;
            made.value = [menu, values] { return values.value(menu->currentIndex()); };
        }
        break;

    case PromptField::Kind::number: {
        auto* number = new QDoubleSpinBox(this);
        number->setDecimals(field.decimals);
        number->setRange(field.minimum, field.maximum);
        number->setSingleStep(field.step);
        number->setValue(field.value.toDouble());
        number->setAlignment(Qt::AlignRight);
        number->setMinimumWidth(96);
        connect(number, &QDoubleSpinBox::valueChanged, this, changed);
        made.editor = number;
        made.value = [number] { return QJsonValue(number->value()); };
        break;
    }

    case PromptField::Kind::slider: {
        auto* slider = new QSlider(Qt::Horizontal, this);
        const int positions = int(std::round((field.maximum - field.minimum) / field.step));
        slider->setRange(0, positions);
        slider->setPageStep(std::max(1, positions / 10));
        slider->setValue(int(std::round((field.value.toDouble() - field.minimum) / field.step)));
        slider->setMinimumWidth(200);
        connect(slider, &QSlider::valueChanged, this, changed);
        made.editor = slider;
        made.value = [slider, field] { return QJsonValue(field.minimum + slider->value() * field.step); };
        made.label = new QLabel(this);
        made.label->setObjectName(field.key + QStringLiteral("Label"));
        // As wide as its widest text, so the form doesn't shift while the slider moves.
        const QFontMetrics metrics = made.label->fontMetrics();
        made.label->setMinimumWidth(std::max(metrics.horizontalAdvance(sliderLabel(field, field.minimum)),
                                             metrics.horizontalAdvance(sliderLabel(field, field.maximum))));
        break;
    }

    case PromptField::Kind::toggle: {
        auto* toggle = new SwitchButton(field.label, this);
        toggle->setChecked(field.value.toBool());
        connect(toggle, &SwitchButton::toggled, this, changed);
        made.editor = toggle;
        made.value = [toggle] { return QJsonValue(toggle->isChecked()); };
        break;
    }

    case PromptField::Kind::text:
    case PromptField::Kind::password:
    case PromptField::Kind::folder: {
        auto* line = new QLineEdit(field.value.toString(), this);
        line->setPlaceholderText(field.placeholder);
        line->setMinimumWidth(240);
        if (field.kind == PromptField::Kind::password) {
            line->setEchoMode(QLineEdit::Password);
            line->setText(QString());  // a password is never offered back
        }
        connect(line, &QLineEdit::textChanged, this, changed);
        made.editor = line;
        made.value = [line] { return QJsonValue(line->text()); };
        if (field.kind == PromptField::Kind::password && field.confirm) {
            made.confirmation = new QLineEdit(this);
            made.confirmation->setObjectName(field.key + QStringLiteral("Confirmation"));
            made.confirmation->setEchoMode(QLineEdit::Password);
            made.confirmation->setPlaceholderText(translate("Verify"));
            made.confirmation->setMinimumWidth(240);
            connect(made.confirmation, &QLineEdit::textChanged, this, changed);
        }
        break;
    }
    }
    made.editor->setObjectName(field.key);
    return made;
}

void PromptDialog::addToForm(Field& field)
{
    const PromptField& description = field.field;
    field.caption = captionLabel(this);
    field.caption->setObjectName(description.key + QStringLiteral("Caption"));

    QWidget* content = field.editor;
    if (description.kind == PromptField::Kind::number)
        content = withWordsAfter(field.editor, description.unit, this);
    if (description.kind == PromptField::Kind::folder) {
        auto* choose = new QPushButton(translate("Choose…"), this);
        choose->setAutoDefault(false);
        auto* line = static_cast<QLineEdit*>(field.editor);
        connect(choose, &QPushButton::clicked, this, [this, line, description] {
            const QString start = line->text().isEmpty() ? QDir::homePath() : line->text();
            const QString folder = QFileDialog::getExistingDirectory(this, description.label, start);
            if (!folder.isEmpty())
                line->setText(QDir::cleanPath(folder));
        });
        auto* pair = new QWidget(this);
        auto* layout = new QHBoxLayout(pair);
        layout->setContentsMargins(0, 0, 0, 0);
        layout->setSpacing(8);
        layout->addWidget(line, 1);
        layout->addWidget(choose);
        content = pair;
    }
    if (field.confirmation) {
        // The second line sits right under the first, so the two read as one question.
        auto* pair = new QWidget(this);
        auto* layout = new QVBoxLayout(pair);
        layout->setContentsMargins(0, 0, 0, 0);
        layout->setSpacing(6);
        layout->addWidget(content);
        layout->addWidget(field.confirmation);
        content = pair;
    }
    field.row = rowWith(content, field.caption, this);

    const bool standsAlone = description.kind == PromptField::Kind::choice
                             && description.choiceStyle == PromptField::ChoiceStyle::segmented;
    if (standsAlone) {
        m_form->addRow(field.row);
        return;
    }
    if (!field.label) {
        // A switch carries its own text, so its label stays empty.
        field.label = new QLabel(description.kind == PromptField::Kind::toggle ? QString() : description.label, this);
        field.label->setBuddy(field.editor);
    }
    field.label->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
    m_form->addRow(field.label, field.row);
}

void PromptDialog::evenOutRows()
{
    int labelWidth = 0;
    int editorHeight = 0;
    for (const Field& field : m_fields) {
        if (!field.label)
            continue;
        labelWidth = std::max({labelWidth, field.label->minimumWidth(), field.label->sizeHint().width()});
        editorHeight = std::max(editorHeight, field.editor->sizeHint().height());
    }
    for (const Field& field : m_fields) {
        if (!field.label)
            continue;
        field.label->setMinimumWidth(labelWidth);
        field.editor->setMinimumHeight(editorHeight);
    }
}

void PromptDialog::refresh()
{
    QJsonObject current;
    for (const Field& field : m_fields)
        current.insert(field.field.key, field.value());

    bool acceptable = true;
    for (const Field& field : m_fields) {
        const QJsonValue value = current.value(field.field.key);
        const bool shown = m_request.isShown(field.field, current);
        m_form->setRowVisible(field.row, shown);
        QString caption = captionFor(field.field, value);
        if (field.confirmation) {
            const QString repeated = field.confirmation->text();
            if (shown && repeated != value.toString())
                acceptable = false;
            // Said only once the second line has something to compare: an empty one is
            // simply not typed yet.
            if (!repeated.isEmpty() && repeated != value.toString())
                caption = translate("The passwords don't match");
        }
        field.caption->setText(caption);
        field.caption->setVisible(!caption.isEmpty());
        // The form sizes a wrapped label by its one-line hint and would cut a caption of two
        // lines in half: it asks for the lines it takes at its narrowest.
        field.caption->setMinimumHeight(caption.isEmpty() ? 0 : field.caption->heightForWidth(captionWidth));
        if (field.field.kind == PromptField::Kind::slider)
            field.label->setText(sliderLabel(field.field, value.toDouble()));
        if (shown && !checkFieldValue(field.field, value))
            acceptable = false;
    }
    m_confirm->setEnabled(acceptable);
}

QJsonObject PromptDialog::answers() const
{
    QJsonObject current;
    for (const Field& field : m_fields)
        current.insert(field.field.key, field.value());
    QJsonObject answers;
    for (const Field& field : m_fields) {
        const QJsonValue value = current.value(field.field.key);
        if (m_request.isShown(field.field, current) || checkFieldValue(field.field, value))
            answers.insert(field.field.key, value);
    }
    return answers;
}

QWidget* PromptDialog::editor(const QString& key) const
{
    for (const Field& field : m_fields) {
        if (field.field.key == key)
            return field.editor;
    }
    return nullptr;
}

QPushButton* PromptDialog::confirmButton() const { return m_confirm; }

QPushButton* PromptDialog::cancelButton() const { return m_cancel; }

}  // namespace wendrel
