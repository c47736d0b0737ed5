#include "Op.h"

namespace wendrel {

Op::Op(Definition definition)
    : FileOperation(std::move(definition.entry)),
      m_excludesExactly(std::move(definition.excludesExactly)),
      m_perFile(std::move(definition.perFile)),
      m_combined(std::move(definition.combined)),
      m_prompt(std::move(definition.prompt)),
      m_available(std::move(definition.available))
{
    Q_ASSERT_X(bool(m_perFile) != bool(m_combined), "Op", "an entry has exactly one body");
}

bool Op::accepts(const ContentType& type) const
{
    return matchesInputs(type) && !m_excludesExactly.contains(type) && (!m_available || m_available());
}

OperationOutcome Op::run(const QStringList& paths, const OperationContext& context) const
{
    if (m_combined)
        return m_combined(paths, context);
    if (paths.size() == 1)
        return m_perFile(paths.first(), context);
    QList<ProducedFile> produced;
    std::optional<QString> message;
    for (const QString& path : paths) {
        context.throwIfCancelled();
        const OperationOutcome outcome = m_perFile(path, context);
        produced.append(outcome.producedFiles());
        if (outcome.isDone())
            message = outcome.message();
    }
    return message && produced.isEmpty() ? OperationOutcome::done(*message) : OperationOutcome::files(std::move(produced));
}

std::optional<PromptRequest> Op::prompt(const QStringList& paths) const
{
    if (!m_prompt.request)
        return std::nullopt;
    return m_prompt.request(paths);
}

void Op::rememberAnswers(const QJsonObject& answers) const
{
    if (m_prompt.remember)
        m_prompt.remember(answers);
}

}  // namespace wendrel
