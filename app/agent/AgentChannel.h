#pragma once

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

// The other end: hands a request to the running agent. False when no agent answers.
bool sendToAgent(const AgentRequest& request, int timeoutMilliseconds = 2000);

}  // namespace wendrel
