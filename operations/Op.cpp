#include "Op.h"

namespace wendrel {

bool Op::accepts(const ContentType& type) const
{
    if (!type.conformsToAny(m.inputs) || type.conformsToAny(m.excludes))
        return false;
    return !m.excludesExactly.contains(type);
}

OperationOutcome Op::run(const QStringList& paths, const OperationContext& context) const
{
    return m.body(paths, context);
}

std::optional<PromptRequest> Op::prompt(const QStringList& paths) const
{
    if (!m.prompt.request)
        return std::nullopt;
    return m.prompt.request(paths);
}

void Op::rememberAnswers(const QJsonObject& answers) const
{
    if (m.prompt.remember)
        m.prompt.remember(answers);
}

}  // namespace wendrel
