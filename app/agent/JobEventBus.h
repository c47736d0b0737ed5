#pragma once

#include "ring/JobEvent.h"

#include <QObject>

namespace wendrel {

// Announces finished jobs on the session bus, so scripts can react: the signal JobFinished
// (operation id, ring, click mode, inputs, results) of interface org.wendrel.Wendrel at
// /org/wendrel/Wendrel. Without a session bus it does nothing.
class JobEventBus : public QObject {
    Q_OBJECT

public:
    static constexpr const char* service = "org.wendrel.Wendrel";
    static constexpr const char* path = "/org/wendrel/Wendrel";
    static constexpr const char* interface = "org.wendrel.Wendrel";

    explicit JobEventBus(QObject* parent = nullptr);

    void publish(const JobEvent& event);
};

}  // namespace wendrel
