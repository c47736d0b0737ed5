#pragma once

#include "operations/RingKind.h"

#include <QByteArray>
#include <QStringList>

#include <chrono>

#include <optional>

namespace wendrel {

// What another wendrel process asks of the running agent, one JSON line over the local socket.
struct AgentRequest {
    enum class Command {
        activate,  // a second start without arguments: bring Wendrel to the user's attention
        ring,      // open a ring for files at the pointer, in click mode
    };

    Command command = Command::activate;
    RingKind ring = RingKind::convert;
    QStringList files;
    // When the agent read the request; not sent, only for measuring how fast the ring appears.
    std::chrono::steady_clock::time_point receivedAt{};

    QByteArray toLine() const;

    // None for anything malformed: the agent ignores what it does not understand.
    static std::optional<AgentRequest> fromLine(const QByteArray& line);

    friend bool operator==(const AgentRequest&, const AgentRequest&) = default;
};

// The local socket the agent listens on: $XDG_RUNTIME_DIR/wendrel.socket, private to the user.
QString agentSocketPath();

}  // namespace wendrel
