#pragma once

#include <QByteArray>
#include <QString>
#include <QStringList>

#include <chrono>

namespace wendrel::test {

// What an independent program did: the tests make inputs and judge outputs with programs that
// owe nothing to the code under test.
struct ToolOutcome {
    bool started = false;
    bool finished = false;  // false when it had to be killed at its deadline
    int exitCode = -1;      // -1 when it crashed or never finished
    QByteArray out;
    QByteArray err;

    bool succeeded() const { return finished && exitCode == 0; }
    // "program arguments: exit N: stderr", for failure messages.
    QString describe(const QString& program, const QStringList& arguments) const;
};

// Runs `program` with `input` on its standard input, in `workingDirectory` when one is given,
// and waits for its end, at most `deadline` (it is killed then). Standard output and error are
// kept apart: output may be binary.
ToolOutcome runExternalTool(const QString& program, const QStringList& arguments,
                            std::chrono::milliseconds deadline = std::chrono::minutes(2),
                            const QByteArray& input = {}, const QString& workingDirectory = {});

}  // namespace wendrel::test
