#include "AgentClient.h"

#include <QLocalSocket>

namespace wendrel {

bool sendToAgent(const AgentRequest& request, int timeoutMilliseconds)
{
    QLocalSocket socket;
    socket.connectToServer(agentSocketPath());
    if (!socket.waitForConnected(timeoutMilliseconds))
        return false;
    socket.write(request.toLine());
    const bool written = socket.waitForBytesWritten(timeoutMilliseconds);
    socket.disconnectFromServer();
    if (socket.state() != QLocalSocket::UnconnectedState)
        socket.waitForDisconnected(timeoutMilliseconds);
    return written;
}

}  // namespace wendrel
