#pragma once

#include "FileOperation.h"

#include <functional>

namespace wendrel {

// A segment that opens a second level of entries, built for the files in hand. A group
// matches on its inputs and exclusions only: it has no exact-type exclusions of its own,
// since its children decide what they take.
class OpGroup final : public FileOperation {
public:
    using ChildrenProvider = std::function<QList<FileOperationPtr>(const QStringList& paths)>;

    struct Definition {
        EntryDescription entry;
        ChildrenProvider childrenProvider;
    };

    explicit OpGroup(Definition definition)
        : FileOperation(std::move(definition.entry)), m_childrenProvider(std::move(definition.childrenProvider))
    {
    }

    static FileOperationPtr make(Definition definition)
    {
        return std::make_shared<const OpGroup>(std::move(definition));
    }

    bool combinesInputs() const override { return false; }
    bool accepts(const ContentType& type) const override { return matchesInputs(type); }

    // A group is opened, never run: throws "Choose an item from the group".
    OperationOutcome run(const QStringList& paths, const OperationContext& context) const override;

    bool isGroup() const override { return true; }
    QList<FileOperationPtr> children(const QStringList& paths) const override;

private:
    ChildrenProvider m_childrenProvider;
};

}  // namespace wendrel
