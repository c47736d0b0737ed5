#pragma once

#include <QList>
#include <QString>

#include <optional>

namespace wendrel {

// One file an operation wrote into its scratch folder, waiting to be placed.
struct ProducedFile {
    QString temporaryUrl;   // absolute path inside the job's scratch folder
    QString preferredName;  // the name, with extension, the result should bear
    QString source;         // the input it came from; the result is placed beside it
    QString note{};         // what the user should know about it ("2 links left out"), if anything
};

// What a successful run produced: files to place, or a message when the operation had its
// effect elsewhere (the clipboard, another application) and there is nothing to place.
class OperationOutcome {
public:
    // One file made: what most per-file operations return.
    OperationOutcome(ProducedFile produced) : m_files{std::move(produced)} {}  // NOLINT: implicit on purpose

    static OperationOutcome files(QList<ProducedFile> produced)
    {
        OperationOutcome outcome;
        outcome.m_files = std::move(produced);
        return outcome;
    }

    static OperationOutcome done(QString message)
    {
        OperationOutcome outcome;
        outcome.m_isDone = true;
        outcome.m_message = std::move(message);
        return outcome;
    }

    bool isDone() const { return m_isDone; }
    const QList<ProducedFile>& producedFiles() const { return m_files; }
    const QString& message() const { return m_message; }

private:
    OperationOutcome() = default;

    bool m_isDone = false;
    QList<ProducedFile> m_files;
    QString m_message;
};

}  // namespace wendrel
