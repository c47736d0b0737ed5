#include "AskBeforeRunning.h"

#include "PromptValues.h"
#include "operations/FileOperation.h"
#include "operations/Logging.h"

namespace wendrel {

std::optional<QJsonObject> askBeforeRunning(const FileOperation& entry, const QStringList& paths,
                                            const PromptAsker& ask)
{
    const std::optional<PromptRequest> request = entry.prompt(paths);
    if (!request)
        return QJsonObject();
    const std::optional<QJsonObject> given = ask(*request);
    if (!given)
        return std::nullopt;
    const CheckedAnswers checked = completeAnswers(*request, *given);
    if (!checked.isValid()) {
        qCWarning(lcJobs, "answers for %s refused: %s", qUtf8Printable(entry.id()),
                  qUtf8Printable(checked.problem));
        return std::nullopt;
    }
    entry.rememberAnswers(checked.answers);
    return checked.answers;
}

}  // namespace wendrel
