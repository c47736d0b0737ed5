#pragma once

#include "operations/RingKind.h"

#include <QJsonObject>
#include <QMetaType>
#include <QString>
#include <QStringList>

namespace wendrel {

// What the program announces after every successful job, as "Wendrel.jobFinished".
struct JobEvent {
    QString operationId;
    RingKind ring = RingKind::convert;
    bool clickMode = false;
    QStringList inputs;
    QStringList results;

    // {"operationID", "ring", "clickMode", "inputs", "results"}, for scripts.
    QJsonObject toJson() const;

    friend bool operator==(const JobEvent&, const JobEvent&) = default;
};

}  // namespace wendrel

Q_DECLARE_METATYPE(wendrel::JobEvent)
