#pragma once

#include "FileOperation.h"
#include "prompt/OperationPrompt.h"

#include <functional>

namespace wendrel {

// A leaf entry: a description and the function that does the work.
class Op final : public FileOperation {
public:
    using Body = std::function<OperationOutcome(const QStringList& paths,
                                                const OperationContext& context)>;

    struct Definition {
        QString id;
        QString title;
        QString symbol;
        RingKind ring = RingKind::convert;
        bool combinesInputs = false;
        QList<ContentType> inputs;           // a file fits if its type conforms to one of these
        QList<ContentType> excludes;         // ...and conforms to none of these
        QList<ContentType> excludesExactly;  // ...and is exactly none of these
        QString description;
        Body body;
        OperationPrompt prompt{};            // empty: runs without asking
    };

    explicit Op(Definition definition) : m(std::move(definition)) {}

    static FileOperationPtr make(Definition definition)
    {
        return std::make_shared<const Op>(std::move(definition));
    }

    const QString& id() const override { return m.id; }
    const QString& title() const override { return m.title; }
    const QString& symbol() const override { return m.symbol; }
    const QString& description() const override { return m.description; }
    RingKind ring() const override { return m.ring; }
    bool combinesInputs() const override { return m.combinesInputs; }
    const QList<ContentType>& inputs() const override { return m.inputs; }
    const QList<ContentType>& excludes() const { return m.excludes; }
    const QList<ContentType>& excludesExactly() const { return m.excludesExactly; }

    bool accepts(const ContentType& type) const override;
    OperationOutcome run(const QStringList& paths, const OperationContext& context) const override;
    std::optional<PromptRequest> prompt(const QStringList& paths) const override;
    void rememberAnswers(const QJsonObject& answers) const override;
    bool isGroup() const override { return false; }
    QList<FileOperationPtr> children(const QStringList&) const override { return {}; }

private:
    Definition m;
};

}  // namespace wendrel
