#pragma once

#include "ContentType.h"
#include "EntryDescription.h"
#include "OperationContext.h"
#include "OperationOutcome.h"
#include "RingKind.h"
#include "prompt/PromptRequest.h"

#include <QJsonObject>
#include <QList>
#include <QString>
#include <QStringList>

#include <algorithm>
#include <memory>
#include <optional>

namespace wendrel {

class FileOperation;
using FileOperationPtr = std::shared_ptr<const FileOperation>;

// One entry of a ring: a leaf operation (Op) or a group that opens a second level (OpGroup).
//
// File locations are absolute local paths; a trailing '/' marks a folder. Entries are
// immutable once built and are shared by the ring, the command line and the job's threads.
class FileOperation {
public:
    explicit FileOperation(EntryDescription entry)
        : m_entry(std::move(entry)), m_id(m_entry.id.toString())
    {
    }
    virtual ~FileOperation() = default;

    const QString& id() const { return m_id; }                // stable: "image.rotateLeft"
    int rank() const { return m_entry.id.rank(); }             // its place on the ring
    const QString& title() const { return m_entry.title; }    // shown on the segment
    const QString& symbol() const { return m_entry.symbol; }  // the icon's design name
    const QString& description() const { return m_entry.description; }  // one line of help
    RingKind ring() const { return m_entry.ring; }
    bool drawsText() const { return m_entry.drawsText; }
    // Whether a run on `paths` lays out text; errs towards yes.
    bool drawsTextFor(const QStringList& paths) const
    {
        return m_entry.drawsText && (paths.isEmpty() || !std::all_of(paths.begin(), paths.end(), [&](const QString& path) {
                   return ContentType::ofFile(path).conformsToAny(m_entry.drawsNoTextFor);
               }));
    }
    const QList<ContentType>& inputs() const { return m_entry.inputs; }
    const QList<ContentType>& excludes() const { return m_entry.excludes; }

    // False: the job runs the operation once per file. True: once with all files, in order.
    virtual bool combinesInputs() const = 0;

    // Whether a file of this type fits the entry.
    virtual bool accepts(const ContentType& type) const = 0;

    // Does the work. Throws OperationError with the message the user sees.
    virtual OperationOutcome run(const QStringList& paths, const OperationContext& context) const = 0;

    // What the entry asks the user before it runs on these files; nothing when it runs
    // straight away. `paths` may be empty when only the fields matter (help, option lists).
    virtual std::optional<PromptRequest> prompt(const QStringList& paths) const
    {
        Q_UNUSED(paths);
        return std::nullopt;
    }

    // The user confirmed the prompt with these answers, complete and checked: the entry keeps
    // what it wants to offer as the starting values next time.
    virtual void rememberAnswers(const QJsonObject& answers) const { Q_UNUSED(answers); }

    virtual bool isGroup() const = 0;

    // The second level for these files; empty for a leaf.
    virtual QList<FileOperationPtr> children(const QStringList& paths) const = 0;

protected:
    // Steps shared by leaves and groups: the type conforms to an input and to no exclusion.
    bool matchesInputs(const ContentType& type) const
    {
        return type.conformsToAny(m_entry.inputs) && !type.conformsToAny(m_entry.excludes);
    }

private:
    EntryDescription m_entry;
    QString m_id;
};

}  // namespace wendrel
