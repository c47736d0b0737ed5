#pragma once

#include "ImageFormat.h"
#include "operations/FileOperation.h"

namespace wendrel {

// A conversion into a format this computer may be unable to write: it fits no file then.
// Finding out means probing the encoders, so the question is asked only once a file of the
// right kind is in hand: listing help, or converting subtitles, never starts libvips.
class WritableFormatEntry final : public FileOperation {
public:
    WritableFormatEntry(EntryDescription entry, FileOperationPtr conversion, ImageFormat format);

    bool combinesInputs() const override { return m_conversion->combinesInputs(); }
    bool accepts(const ContentType& type) const override;
    OperationOutcome run(const QStringList& paths, const OperationContext& context) const override;
    std::optional<PromptRequest> prompt(const QStringList& paths) const override;
    void rememberAnswers(const QJsonObject& answers) const override;
    bool isGroup() const override { return false; }
    QList<FileOperationPtr> children(const QStringList&) const override { return {}; }

private:
    FileOperationPtr m_conversion;
    ImageFormat m_format;
};

}  // namespace wendrel
