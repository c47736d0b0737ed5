#include "PromptRequest.h"

#include <QJsonArray>
#include <QLocale>

#include <cmath>

namespace wendrel {

namespace {

QString kindName(PromptField::Kind kind)
{
    switch (kind) {
    case PromptField::Kind::choice: return QStringLiteral("choice");
    case PromptField::Kind::number: return QStringLiteral("number");
    case PromptField::Kind::slider: return QStringLiteral("slider");
    case PromptField::Kind::toggle: return QStringLiteral("toggle");
    case PromptField::Kind::text: return QStringLiteral("text");
    case PromptField::Kind::password: return QStringLiteral("password");
    case PromptField::Kind::folder: return QStringLiteral("folder");
    }
    return {};
}

QJsonObject fieldToJson(const PromptField& field)
{
    QJsonObject object{
        {QStringLiteral("key"), field.key},
        {QStringLiteral("kind"), kindName(field.kind)},
        {QStringLiteral("label"), field.label},
        {QStringLiteral("option"), QStringLiteral("--") + field.option},
    };
    // A password's starting value stays out of listings.
    if (field.kind != PromptField::Kind::password)
        object.insert(QStringLiteral("value"), field.value);

    switch (field.kind) {
    case PromptField::Kind::choice: {
        QJsonArray choices;
        for (const PromptChoice& choice : field.choices) {
            choices.append(QJsonObject{{QStringLiteral("value"), choice.value},
                                       {QStringLiteral("title"), choice.title}});
        }
        object.insert(QStringLiteral("choices"), choices);
        if (field.acceptsOtherNumbers) {
            object.insert(QStringLiteral("otherNumbers"),
                          QJsonObject{{QStringLiteral("minimum"), field.minimum},
                                      {QStringLiteral("maximum"), field.maximum}});
        }
        break;
    }
    case PromptField::Kind::slider:
        object.insert(QStringLiteral("step"), field.step);
        object.insert(QStringLiteral("valueFormat"), field.valueFormat);
        [[fallthrough]];
    case PromptField::Kind::number:
        object.insert(QStringLiteral("minimum"), field.minimum);
        object.insert(QStringLiteral("maximum"), field.maximum);
        if (!field.unit.isEmpty())
            object.insert(QStringLiteral("unit"), field.unit);
        break;
    case PromptField::Kind::password:
        object.insert(QStringLiteral("confirm"), field.confirm);
        [[fallthrough]];
    case PromptField::Kind::text:
    case PromptField::Kind::folder:
        object.insert(QStringLiteral("required"), field.required);
        break;
    case PromptField::Kind::toggle:
        break;
    }

    if (!field.caption.isEmpty())
        object.insert(QStringLiteral("caption"), field.caption);
    if (!field.captionWhenOn.isEmpty())
        object.insert(QStringLiteral("captionWhenOn"), field.captionWhenOn);
    if (field.shownWhen) {
        QJsonArray values;
        for (const QJsonValue& value : field.shownWhen->values)
            values.append(value);
        object.insert(QStringLiteral("shownWhen"), QJsonObject{{QStringLiteral("key"), field.shownWhen->key},
                                                                {QStringLiteral("values"), values}});
    }
    return object;
}

}  // namespace

const PromptField* PromptRequest::field(const QString& key) const
{
    for (const PromptField& candidate : fields) {
        if (candidate.key == key)
            return &candidate;
    }
    return nullptr;
}

const PromptField* PromptRequest::fieldForOption(const QString& option) const
{
    for (const PromptField& candidate : fields) {
        if (candidate.option == option)
            return &candidate;
    }
    return nullptr;
}

QJsonObject PromptRequest::startingAnswers() const
{
    QJsonObject answers;
    for (const PromptField& each : fields)
        answers.insert(each.key, each.value);
    return answers;
}

bool PromptRequest::isShown(const PromptField& shown, const QJsonObject& answers) const
{
    // Walks up the chain of conditions; the bound on the steps guards against a cycle.
    const PromptField* current = &shown;
    for (qsizetype steps = 0; steps <= fields.size(); ++steps) {
        if (!current->shownWhen)
            return true;
        if (!current->shownWhen->values.contains(answers.value(current->shownWhen->key)))
            return false;
        current = field(current->shownWhen->key);
        if (!current)
            return true;
    }
    return false;
}

QString displayNumber(double value)
{
    return QLocale::c().toString(value, 'f', QLocale::FloatingPointShortest);
}

QString sliderLabel(const PromptField& field, double value)
{
    return field.valueFormat.arg(displayNumber(std::round(value)));
}

QStringList choiceValues(const PromptField& field)
{
    QStringList values;
    for (const PromptChoice& choice : field.choices)
        values.append(plainValue(field, choice.value));
    return values;
}

QString choiceTitle(const PromptField& field, const QJsonValue& value)
{
    for (const PromptChoice& choice : field.choices) {
        if (choice.value == value)
            return choice.title;
    }
    if (field.acceptsOtherNumbers && value.isDouble()) {
        const QString number = displayNumber(value.toDouble());
        return field.unit.isEmpty() ? number : number + u' ' + field.unit;
    }
    return {};
}

QString captionFor(const PromptField& field, const QJsonValue& value)
{
    if (field.kind == PromptField::Kind::toggle && value.toBool() && !field.captionWhenOn.isEmpty())
        return field.captionWhenOn;
    return field.caption;
}

QString plainValue(const PromptField& field, const QJsonValue& value)
{
    switch (field.kind) {
    case PromptField::Kind::toggle:
        return value.toBool() ? QStringLiteral("on") : QStringLiteral("off");
    case PromptField::Kind::password:
        return {};
    case PromptField::Kind::choice:
    case PromptField::Kind::number:
    case PromptField::Kind::slider:
        if (value.isDouble())
            return displayNumber(value.toDouble());
        return value.toString();
    case PromptField::Kind::text:
    case PromptField::Kind::folder:
        return value.toString();
    }
    return {};
}

QJsonObject toJson(const PromptRequest& request)
{
    QJsonArray fields;
    for (const PromptField& field : request.fields)
        fields.append(fieldToJson(field));
    QJsonObject object{
        {QStringLiteral("title"), request.title},
        {QStringLiteral("fields"), fields},
        {QStringLiteral("confirm"), request.confirmText},
        {QStringLiteral("cancel"), request.cancelText},
    };
    if (!request.message.isEmpty())
        object.insert(QStringLiteral("message"), request.message);
    return object;
}

}  // namespace wendrel
