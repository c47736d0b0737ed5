#pragma once

#include "app/front/AgentClient.h"
#include "app/shell/AgentRequest.h"

#include <QLocalServer>
#include <QObject>

#include <functional>

namespace wendrel {

// The agent's end of the local socket: one agent per user session. Listening fails when
// another agent already answers there.
class AgentChannel : public QObject {
    Q_OBJECT

public:
    explicit AgentChannel(QObject* parent = nullptr);

    // Starts listening; false when another agent is running (or the socket can't be made).
    bool listen();

Q_SIGNALS:
    void requestReceived(const wendrel::AgentRequest& request);

private:
    void onConnection();

    QLocalServer m_server;
};

}  // namespace wendrel
