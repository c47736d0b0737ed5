#pragma once

#include "FileOperation.h"

#include <functional>

namespace wendrel {

// A segment that opens a second level of entries, built for the files in hand.
class OpGroup final : public FileOperation {
public:
    using ChildrenProvider = std::function<QList<FileOperationPtr>(const QStringList& paths)>;

    struct Definition {
        QString id;
        QString title;
        QString symbol;
        RingKind ring = RingKind::tools;
        QList<ContentType> inputs;
        QList<ContentType> excludes;
        QString description;
        ChildrenProvider childrenProvider;
    };

    explicit OpGroup(Definition definition) : m(std::move(definition)) {}

    static FileOperationPtr make(Definition definition)
    {
        return std::make_shared<const OpGroup>(std::move(definition));
    }

    const QString& id() const override { return m.id; }
    const QString& title() const override { return m.title; }
    const QString& symbol() const override { return m.symbol; }
    const QString& description() const override { return m.description; }
    RingKind ring() const override { return m.ring; }
    bool combinesInputs() const override { return false; }
    const QList<ContentType>& inputs() const override { return m.inputs; }

    bool accepts(const ContentType& type) const override;

    // A group is opened, never run: throws "Choose an item from the group".
    OperationOutcome run(const QStringList& paths, const OperationContext& context) const override;

    bool isGroup() const override { return true; }
    QList<FileOperationPtr> children(const QStringList& paths) const override;

private:
    Definition m;
};

}  // namespace wendrel
