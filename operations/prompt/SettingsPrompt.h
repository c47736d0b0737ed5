#pragma once

#include "OperationPrompt.h"
#include "operations/OperationContext.h"
#include "operations/OperationError.h"
#include "operations/settings/StoredSettings.h"

#include <QCoreApplication>

namespace wendrel {

// The record with the answers put over it, field by field: a prompt whose keys are the record's
// JSON keys answers part or all of it. Nothing when a value doesn't suit its field.
template <StoredSettings Record>
std::optional<Record> withAnswers(const Record& base, const QJsonObject& answers)
{
    QJsonObject merged = base.toJson();
    for (auto answer = answers.begin(); answer != answers.end(); ++answer)
        merged.insert(answer.key(), answer.value());
    return Record::fromJson(merged);
}

// The prompt of an entry whose questions are the fields of a stored settings record: it opens
// with the stored record, and confirming stores the answers as the new record.
template <StoredSettings Record>
OperationPrompt settingsPrompt(std::function<PromptRequest(const Record& startingValues, qsizetype fileCount)> view)
{
    return {
        .request = [view = std::move(view)](const QStringList& paths) {
            return view(loadStoredSettings<Record>(), paths.size());
        },
        .remember = [](const QJsonObject& answers) {
            if (const std::optional<Record> record = withAnswers(loadStoredSettings<Record>(), answers))
                saveStoredSettings(*record);
        },
    };
}

// The settings a job runs with: the answers confirmed for it over the stored record, or the
// stored record alone when the job was started without asking. Throws OperationError when
// the answers don't suit the record, before anything is written.
template <StoredSettings Record>
Record settingsForJob(const OperationContext& context)
{
    const Record stored = loadStoredSettings<Record>();
    if (context.answers().isEmpty())
        return stored;
    if (const std::optional<Record> answered = withAnswers(stored, context.answers()))
        return *answered;
    throw OperationError(QCoreApplication::translate("OperationPrompt", "These settings can't be used"));
}

}  // namespace wendrel
