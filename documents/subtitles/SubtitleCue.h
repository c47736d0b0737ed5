#pragma once

#include <QList>
#include <QString>

namespace wendrel::SubtitleOperations {

// One subtitle: shown from `start` to `end` seconds, lines separated by "\n".
struct Cue {
    double start = 0;
    double end = 0;
    QString text;

    friend bool operator==(const Cue&, const Cue&) = default;
};

}  // namespace wendrel::SubtitleOperations
