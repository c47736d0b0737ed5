#include "AgentChannel.h"

#include "operations/Logging.h"

#include <QLocalSocket>

namespace wendrel {

AgentChannel::AgentChannel(QObject* parent) : QObject(parent)
{
    m_server.setSocketOptions(QLocalServer::UserAccessOption);
    connect(&m_server, &QLocalServer::newConnection, this, &AgentChannel::onConnection);
}

bool AgentChannel::listen()
{
    const QString path = agentSocketPath();
    {
        QLocalSocket probe;
        probe.connectToServer(path);
        if (probe.waitForConnected(300))
            return false;  // an agent is already there
    }
    // Whatever is left at the path belongs to an agent that is gone.
    QLocalServer::removeServer(path);
    if (!m_server.listen(path)) {
        qCWarning(lcRing, "can't listen on %s: %s", qUtf8Printable(path), qUtf8Printable(m_server.errorString()));
        return false;
    }
    return true;
}

void AgentChannel::onConnection()
{
    while (QLocalSocket* socket = m_server.nextPendingConnection()) {
        connect(socket, &QLocalSocket::disconnected, socket, &QObject::deleteLater);
        connect(socket, &QLocalSocket::readyRead, this, [this, socket] {
            while (socket->canReadLine()) {
                const QByteArray line = socket->readLine(64 * 1024 * 1024);
                if (std::optional<AgentRequest> request = AgentRequest::fromLine(line)) {
                    request->receivedAt = std::chrono::steady_clock::now();
                    // Handled from the event loop, not from inside this socket's handler: a
                    // request may open a modal dialog, and the socket may be gone by its end.
                    QMetaObject::invokeMethod(
                        this, [this, handled = *request] { Q_EMIT requestReceived(handled); }, Qt::QueuedConnection);
                } else {
                    qCWarning(lcRing, "ignored a request the agent does not understand");
                }
            }
        });
    }
}

}  // namespace wendrel
