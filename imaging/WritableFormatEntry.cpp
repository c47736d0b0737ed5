#include "WritableFormatEntry.h"

namespace wendrel {

WritableFormatEntry::WritableFormatEntry(EntryDescription entry, FileOperationPtr conversion, ImageFormat format)
    : FileOperation(std::move(entry)), m_conversion(std::move(conversion)), m_format(format)
{
}

bool WritableFormatEntry::accepts(const ContentType& type) const
{
    return m_conversion->accepts(type) && canWrite(m_format);
}

OperationOutcome WritableFormatEntry::run(const QStringList& paths, const OperationContext& context) const
{
    return m_conversion->run(paths, context);
}

std::optional<PromptRequest> WritableFormatEntry::prompt(const QStringList& paths) const
{
    return m_conversion->prompt(paths);
}

void WritableFormatEntry::rememberAnswers(const QJsonObject& answers) const { m_conversion->rememberAnswers(answers); }

}  // namespace wendrel
