#pragma once

#include "FileOperation.h"
#include "prompt/OperationPrompt.h"

#include <functional>

namespace wendrel {

// A leaf entry: its description and the function that does the work.
class Op final : public FileOperation {
public:
    // Works on one file: its one result, written into scratch space (a ProducedFile converts),
    // or `done` when its effect is elsewhere. The job around it checks for cancellation
    // between files, reports each file's end as progress, and runs several files side by side.
    using PerFileBody = std::function<OperationOutcome(const QString& path, const OperationContext& context)>;

    // Works on all the files at once (a merge, an archive) and returns whatever it made.
    using CombinedBody = std::function<OperationOutcome(const QStringList& paths, const OperationContext& context)>;

    // Exactly one of the two bodies is given; which one decides combinesInputs.
    struct Definition {
        EntryDescription entry;
        QList<ContentType> excludesExactly{};  // a file doesn't fit if its type is exactly one of these
        PerFileBody perFile{};
        CombinedBody combined{};
        OperationPrompt prompt{};              // empty: runs without asking
        // Whether this computer can do the work at all (an encoder it may lack); asked only
        // once a fitting file is in hand, since finding out may be costly. Empty: always.
        std::function<bool()> available{};
    };

    explicit Op(Definition definition);

    static FileOperationPtr make(Definition definition)
    {
        return std::make_shared<const Op>(std::move(definition));
    }

    bool combinesInputs() const override { return bool(m_combined); }
    const QList<ContentType>& excludesExactly() const { return m_excludesExactly; }

    bool accepts(const ContentType& type) const override;

    // A per-file body runs once for each path, in order: their files together, or the last
    // message when none made files.
    OperationOutcome run(const QStringList& paths, const OperationContext& context) const override;
    std::optional<PromptRequest> prompt(const QStringList& paths) const override;
    void rememberAnswers(const QJsonObject& answers) const override;
    bool isGroup() const override { return false; }
    QList<FileOperationPtr> children(const QStringList&) const override { return {}; }

private:
    QList<ContentType> m_excludesExactly;
    PerFileBody m_perFile;
    CombinedBody m_combined;
    OperationPrompt m_prompt;
    std::function<bool()> m_available;
};

}  // namespace wendrel
