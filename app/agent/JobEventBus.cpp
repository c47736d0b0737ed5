#include "JobEventBus.h"

#include "operations/Logging.h"

#include <QDBusConnection>
#include <QDBusMessage>

namespace wendrel {

JobEventBus::JobEventBus(QObject* parent) : QObject(parent)
{
    QDBusConnection bus = QDBusConnection::sessionBus();
    if (bus.isConnected() && !bus.registerService(QString::fromLatin1(service)))
        qCInfo(lcRing, "session bus name %s is taken", service);
}

void JobEventBus::publish(const JobEvent& event)
{
    QDBusConnection bus = QDBusConnection::sessionBus();
    if (!bus.isConnected())
        return;
    QDBusMessage signal = QDBusMessage::createSignal(QString::fromLatin1(path), QString::fromLatin1(interface),
                                                     QStringLiteral("JobFinished"));
    signal << event.operationId << rawValue(event.ring) << event.clickMode << event.inputs << event.results;
    bus.send(signal);
}

}  // namespace wendrel
