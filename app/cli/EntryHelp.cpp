#include "EntryHelp.h"

#include "operations/OperationCatalog.h"
#include "operations/prompt/PromptValues.h"

#include <QCoreApplication>

#include <algorithm>

namespace wendrel {

namespace {

QString translate(const char* text) { return QCoreApplication::translate("CommandLine", text); }

// The entries that ask before running, ring by ring, with their prompts.
template <typename Visit>
void forEachPrompt(const OperationCatalog& catalog, Visit visit)
{
    for (RingKind ring : allRingKinds) {
        for (const FileOperationPtr& entry : catalog.entries(ring)) {
            if (const std::optional<PromptRequest> request = entry->prompt({}))
                visit(*entry, *request);
        }
    }
}

// The value after the option: "targetSize|reduceBy|quality", "NUMBER", "1-99".
QString valueSynopsis(const PromptField& field)
{
    switch (field.kind) {
    case PromptField::Kind::choice: {
        QStringList values = choiceValues(field);
        if (field.acceptsOtherNumbers)
            values.append(QStringLiteral("N"));
        return values.join(u'|');
    }
    case PromptField::Kind::number: return QStringLiteral("NUMBER");
    case PromptField::Kind::slider:
        return QStringLiteral("%1-%2").arg(displayNumber(field.minimum), displayNumber(field.maximum));
    case PromptField::Kind::toggle: return QStringLiteral("yes|no");
    case PromptField::Kind::text: return QStringLiteral("TEXT");
    case PromptField::Kind::password: return QStringLiteral("PASSWORD");
    case PromptField::Kind::folder: return QStringLiteral("DIR");
    }
    return {};
}

// What the field is, in the words the dialog uses.
QString meaning(const PromptField& field)
{
    switch (field.kind) {
    case PromptField::Kind::choice: {
        QStringList titles;
        for (const PromptChoice& choice : field.choices)
            titles.append(choice.title);
        QString text = field.label + QStringLiteral(": ") + titles.join(QStringLiteral(", "));
        if (field.acceptsOtherNumbers)
            text += translate(", or another number of %1 from %2 to %3")
                        .arg(field.unit.isEmpty() ? translate("number") : field.unit,
                             displayNumber(field.minimum), displayNumber(field.maximum));
        return text;
    }
    case PromptField::Kind::number:
        return translate("%1 … %2, from %3 to %4")
            .arg(field.label, field.unit, displayNumber(field.minimum), displayNumber(field.maximum));
    case PromptField::Kind::slider:
        return translate("%1, where N is %2").arg(field.valueFormat.arg(QStringLiteral("N")), acceptedValues(field));
    case PromptField::Kind::password:
        return translate("%1. Other users can see it in the process list: leave it out to be asked "
                         "without echo on a terminal")
            .arg(field.label);
    case PromptField::Kind::toggle:
    case PromptField::Kind::text:
    case PromptField::Kind::folder:
        return field.label;
    }
    return {};
}

QString condition(const PromptRequest& request, const PromptField& field)
{
    if (!field.shownWhen)
        return {};
    const PromptField* controller = request.field(field.shownWhen->key);
    if (!controller)
        return {};
    QStringList values;
    for (const QJsonValue& value : field.shownWhen->values)
        values.append(plainValue(*controller, value));
    return translate("With --%1 %2.").arg(controller->option, values.join(QStringLiteral(" or ")));
}

}  // namespace

QString entryHelp(const FileOperation& entry)
{
    QStringList lines{
        QStringLiteral("%1  %2 (%3)").arg(entry.id(), entry.title(), title(entry.ring())),
    };
    if (!entry.description().isEmpty())
        lines << entry.description();
    lines << QString();

    const std::optional<PromptRequest> request = entry.prompt({});
    if (!request) {
        lines << translate("Usage: wendrel run %1 FILE...").arg(entry.id())
              << translate("It runs straight away: there are no settings to give.");
        return lines.join(u'\n');
    }

    lines << translate("Usage: wendrel run %1 [SETTINGS] FILE...").arg(entry.id()) << QString()
          << translate("Settings:");
    for (const PromptField& field : request->fields) {
        lines << QStringLiteral("  --%1 %2").arg(field.option, valueSynopsis(field));
        QStringList details{meaning(field) + u'.'};
        if (const QString when = condition(*request, field); !when.isEmpty())
            details << when;
        if (field.kind != PromptField::Kind::password && !plainValue(field, field.value).isEmpty())
            details << translate("Now: %1.").arg(plainValue(field, field.value));
        lines << QStringLiteral("      ") + details.join(u' ');
    }
    lines << QString()
          << translate("Settings left out keep their values above, and giving a setting that only applies\n"
                       "in one mode selects that mode. Settings given here are used for this run only.\n"
                       "With no settings at all, a terminal asks for each one (and remembers the answers,\n"
                       "as the dialog does); without a terminal the values above are used.");
    return lines.join(u'\n');
}

QStringList promptOptionNames(const OperationCatalog& catalog)
{
    QStringList names;
    forEachPrompt(catalog, [&](const FileOperation&, const PromptRequest& request) {
        for (const PromptField& field : request.fields) {
            if (!names.contains(field.option))
                names.append(field.option);
        }
    });
    return names;
}

QString promptOptionsSummary(const OperationCatalog& catalog)
{
    QStringList lines;
    qsizetype idWidth = 0;
    forEachPrompt(catalog, [&](const FileOperation& entry, const PromptRequest&) {
        idWidth = std::max(idWidth, entry.id().size());
    });
    forEachPrompt(catalog, [&](const FileOperation& entry, const PromptRequest& request) {
        QStringList options;
        for (const PromptField& field : request.fields)
            options.append(QStringLiteral("--") + field.option);
        lines.append(QStringLiteral("  %1  %2").arg(entry.id(), -idWidth).arg(options.join(u' ')));
    });
    return lines.join(u'\n');
}

}  // namespace wendrel
