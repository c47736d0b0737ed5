#include "PromptValues.h"

#include <QCoreApplication>
#include <QDir>
#include <QHash>
#include <QLocale>

#include <algorithm>
#include <cmath>

namespace wendrel {

namespace {

QString translate(const char* text) { return QCoreApplication::translate("Prompt", text); }

// "a", "a or b", "a, b or c".
QString alternatives(const QStringList& items)
{
    if (items.size() <= 1)
        return items.value(0);
    return translate("%1 or %2").arg(items.mid(0, items.size() - 1).join(QStringLiteral(", ")), items.last());
}

// Case, spaces, dashes and underscores don't matter when a person names a choice.
QString comparable(const QString& text)
{
    QString result;
    for (const QChar character : text) {
        if (character != u'-' && character != u'_' && !character.isSpace())
            result.append(character.toLower());
    }
    return result;
}

std::optional<double> readNumber(const QString& text)
{
    bool ok = false;
    const double number = QLocale::c().toDouble(text.trimmed(), &ok);
    if (!ok || !std::isfinite(number))
        return std::nullopt;
    return number;
}

bool isWhole(double value) { return std::isfinite(value) && value == std::trunc(value); }

bool inRange(const PromptField& field, double value)
{
    return std::isfinite(value) && value >= field.minimum && value <= field.maximum;
}

bool isOnStep(const PromptField& field, double value)
{
    if (field.step <= 0)
        return true;
    const double steps = (value - field.minimum) / field.step;
    return std::abs(steps - std::round(steps)) < 1e-9;
}

bool isOtherNumber(const PromptField& field, const QJsonValue& value)
{
    return field.acceptsOtherNumbers && value.isDouble() && isWhole(value.toDouble())
           && inRange(field, value.toDouble());
}

std::optional<QJsonValue> readChoice(const PromptField& field, const QString& text)
{
    const QString wanted = comparable(text);
    for (const PromptChoice& choice : field.choices) {
        QStringList names = choice.aliases;
        names << plainValue(field, choice.value) << choice.title;
        for (const QString& name : std::as_const(names)) {
            if (comparable(name) == wanted)
                return choice.value;
        }
    }
    // A number typed as "1920.0" still names the choice 1920.
    if (const std::optional<double> number = readNumber(text))
        return checkFieldValue(field, QJsonValue(*number));
    return std::nullopt;
}

std::optional<QJsonValue> readToggle(const QString& text)
{
    const QString word = comparable(text);
    for (const char* yes : {"yes", "y", "on", "true", "1"}) {
        if (word == QLatin1String(yes))
            return QJsonValue(true);
    }
    for (const char* no : {"no", "n", "off", "false", "0"}) {
        if (word == QLatin1String(no))
            return QJsonValue(false);
    }
    return std::nullopt;
}

QString option(const PromptField& field) { return QStringLiteral("--") + field.option; }

// "--mode quality": the option that sets a controlling field to a value.
QString optionSetting(const PromptField& field, const QJsonValue& value)
{
    return option(field) + u' ' + plainValue(field, value);
}

}  // namespace

std::optional<QJsonValue> readFieldValue(const PromptField& field, const QString& text)
{
    switch (field.kind) {
    case PromptField::Kind::choice:
        return readChoice(field, text);
    case PromptField::Kind::number:
    case PromptField::Kind::slider:
        if (const std::optional<double> number = readNumber(text))
            return checkFieldValue(field, QJsonValue(*number));
        return std::nullopt;
    case PromptField::Kind::toggle:
        return readToggle(text);
    case PromptField::Kind::text:
    case PromptField::Kind::password:
    case PromptField::Kind::folder:
        return checkFieldValue(field, QJsonValue(text));
    }
    return std::nullopt;
}

std::optional<QJsonValue> checkFieldValue(const PromptField& field, const QJsonValue& value)
{
    bool valid = false;
    switch (field.kind) {
    case PromptField::Kind::choice:
        valid = std::any_of(field.choices.cbegin(), field.choices.cend(),
                            [&](const PromptChoice& choice) { return choice.value == value; })
                || isOtherNumber(field, value);
        break;
    case PromptField::Kind::number:
        valid = value.isDouble() && inRange(field, value.toDouble());
        break;
    case PromptField::Kind::slider:
        valid = value.isDouble() && inRange(field, value.toDouble()) && isOnStep(field, value.toDouble());
        break;
    case PromptField::Kind::toggle:
        valid = value.isBool();
        break;
    case PromptField::Kind::text:
        valid = value.isString() && !(field.required && value.toString().trimmed().isEmpty());
        break;
    case PromptField::Kind::password:
        valid = value.isString() && !(field.required && value.toString().isEmpty());
        break;
    case PromptField::Kind::folder:
        valid = value.isString()
                && (value.toString().isEmpty() ? !field.required : QDir::isAbsolutePath(value.toString()));
        break;
    }
    if (!valid)
        return std::nullopt;
    return value;
}

QString acceptedValues(const PromptField& field)
{
    const QString minimum = displayNumber(field.minimum);
    const QString maximum = displayNumber(field.maximum);
    switch (field.kind) {
    case PromptField::Kind::choice: {
        QStringList values = choiceValues(field);
        if (field.acceptsOtherNumbers)
            values.append(translate("another whole number from %1 to %2").arg(minimum, maximum));
        return alternatives(values);
    }
    case PromptField::Kind::number:
        return translate("a number from %1 to %2").arg(minimum, maximum);
    case PromptField::Kind::slider:
        if (field.step == 1 && isWhole(field.minimum))
            return translate("a whole number from %1 to %2").arg(minimum, maximum);
        return translate("a number from %1 to %2 in steps of %3").arg(minimum, maximum, displayNumber(field.step));
    case PromptField::Kind::toggle:
        return translate("yes or no");
    case PromptField::Kind::text:
        return field.required ? translate("some text") : translate("any text");
    case PromptField::Kind::password:
        return field.required ? translate("a password") : translate("a password, or nothing");
    case PromptField::Kind::folder:
        return translate("the path of a folder");
    }
    return {};
}

CheckedAnswers completeAnswers(const PromptRequest& request, const QJsonObject& given)
{
    CheckedAnswers result{request.startingAnswers(), {}};
    for (auto entry = given.begin(); entry != given.end(); ++entry) {
        const PromptField* field = request.field(entry.key());
        if (!field) {
            result.problem = translate("There is no field “%1”.").arg(entry.key());
            return result;
        }
        if (!checkFieldValue(*field, entry.value())) {
            result.problem = translate("%1: expected %2.").arg(field->label, acceptedValues(*field));
            return result;
        }
        result.answers.insert(entry.key(), entry.value());
    }
    return result;
}

CheckedAnswers answersFromOptions(const PromptRequest& request,
                                  const QList<std::pair<QString, QString>>& options)
{
    CheckedAnswers result{request.startingAnswers(), {}};
    QList<const PromptField*> givenFields;
    for (const auto& [name, text] : options) {
        const PromptField* field = request.fieldForOption(name);
        if (!field) {
            QStringList known;
            for (const PromptField& each : request.fields)
                known.append(option(each));
            result.problem = translate("--%1 is not one of the settings here; they are %2.")
                                 .arg(name, alternatives(known));
            return result;
        }
        const std::optional<QJsonValue> value = readFieldValue(*field, text);
        if (!value) {
            result.problem = translate("Invalid value “%1” for %2: expected %3.")
                                 .arg(text, option(*field), acceptedValues(*field));
            return result;
        }
        result.answers.insert(field->key, *value);
        givenFields.removeOne(field);  // the last of repeated options counts
        givenFields.append(field);
    }

    // Switch on what each given field needs to be shown, unless someone asked otherwise.
    QHash<QString, const PromptField*> switchedBy;  // controlling key → the option that set it
    for (const PromptField* field : std::as_const(givenFields)) {
        const PromptField* current = field;
        for (qsizetype steps = 0; current && current->shownWhen && steps <= request.fields.size(); ++steps) {
            const PromptCondition& condition = *current->shownWhen;
            const PromptField* controller = request.field(condition.key);
            if (!controller)
                break;
            const QJsonValue now = result.answers.value(condition.key);
            if (!condition.values.contains(now)) {
                const QString needed = optionSetting(*controller, condition.values.value(0));
                if (givenFields.contains(controller)) {
                    result.problem = translate("%1 applies only with %2, not with %3.")
                                         .arg(option(*field), needed, optionSetting(*controller, now));
                    return result;
                }
                if (const PromptField* other = switchedBy.value(condition.key)) {
                    result.problem = translate("%1 and %2 can't be used together: one needs %3, the other %4.")
                                         .arg(option(*other), option(*field),
                                              optionSetting(*controller, now), needed);
                    return result;
                }
                result.answers.insert(condition.key, condition.values.value(0));
                switchedBy.insert(condition.key, field);
            } else if (!switchedBy.contains(condition.key)) {
                switchedBy.insert(condition.key, field);
            }
            current = controller;
        }
    }
    return result;
}

}  // namespace wendrel
