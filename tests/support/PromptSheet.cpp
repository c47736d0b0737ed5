#include "PromptSheet.h"

namespace wendrel::test {

QStringList shownFields(const PromptRequest& request, const QJsonObject& answers)
{
    QStringList lines;
    for (const PromptField& field : request.fields) {
        if (!request.isShown(field, answers))
            continue;
        QStringList parts;
        for (const PromptChoice& choice : field.choices)
            parts.append(choice.title);
        parts += QStringList{field.unit, captionFor(field, answers.value(field.key))};
        parts.removeAll(QString());
        lines.append(field.label + QStringLiteral(": ") + parts.join(QStringLiteral(" | ")));
    }
    return lines;
}

}  // namespace wendrel::test
