#include "HotKeyCenter.h"

#include "operations/settings/SettingsStore.h"

#include <QJsonDocument>

namespace wendrel {

namespace {

QString storedKey(RingKind ring) { return QStringLiteral("hotKey.") + rawValue(ring); }

}  // namespace

HotKeyCenter::HotKeyCenter(HotKeyGrabber& grabber, QObject* parent) : QObject(parent), m_grabber(grabber) {}

void HotKeyCenter::load()
{
    m_hotKeys.clear();
    for (RingKind ring : allRingKinds) {
        const std::optional<QString> stored = SettingsStore::text(storedKey(ring));
        if (!stored)
            continue;
        if (const std::optional<HotKey> hotKey = HotKey::fromJson(QJsonDocument::fromJson(stored->toUtf8()).object()))
            m_hotKeys.insert(ring, *hotKey);
    }
    Q_EMIT changed();
}

void HotKeyCenter::setHotKey(const std::optional<HotKey>& hotKey, RingKind ring)
{
    if (hotKey) {
        m_hotKeys.insert(ring, *hotKey);
        SettingsStore::setText(storedKey(ring),
                               QString::fromUtf8(QJsonDocument(hotKey->toJson()).toJson(QJsonDocument::Compact)));
    } else {
        m_hotKeys.remove(ring);
        SettingsStore::remove(storedKey(ring));
    }
    registerAll();
}

std::optional<RingKind> HotKeyCenter::ringUsing(quint32 keyCode, quint32 carbonModifiers) const
{
    for (RingKind ring : allRingKinds) {
        const auto found = m_hotKeys.constFind(ring);
        if (found != m_hotKeys.cend() && found->keyCode == keyCode && found->carbonModifiers == carbonModifiers)
            return ring;
    }
    return std::nullopt;
}

void HotKeyCenter::setSuspended(bool suspended)
{
    if (suspended == m_suspended)
        return;
    m_suspended = suspended;
    registerAll();
}

void HotKeyCenter::unregisterAll()
{
    for (int id : std::as_const(m_registered))
        m_grabber.release(id);
    m_registered.clear();
}

void HotKeyCenter::registerAll()
{
    unregisterAll();
    QSet<RingKind> conflicts;
    if (!m_suspended) {
        for (RingKind ring : allRingKinds) {
            const auto found = m_hotKeys.constFind(ring);
            if (found == m_hotKeys.cend())
                continue;
            if (m_grabber.grab(idFor(ring), *found))
                m_registered.insert(idFor(ring));
            else
                conflicts.insert(ring);
        }
    }
    m_conflicts = conflicts;
    Q_EMIT changed();
}

void HotKeyCenter::triggered(int id)
{
    if (m_suspended || !m_registered.contains(id) || !onTrigger)
        return;
    for (RingKind ring : allRingKinds) {
        if (idFor(ring) == id) {
            onTrigger(ring);
            return;
        }
    }
}

}  // namespace wendrel
