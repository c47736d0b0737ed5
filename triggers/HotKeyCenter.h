#pragma once

#include "HotKey.h"

#include <QHash>
#include <QObject>
#include <QSet>

#include <functional>
#include <optional>

namespace wendrel {

// What actually claims a key combination from the windowing system, for the whole desktop.
class HotKeyGrabber {
public:
    virtual ~HotKeyGrabber() = default;
    // False when the system refuses: another program holds the combination.
    virtual bool grab(int id, const HotKey& hotKey) = 0;
    virtual void release(int id) = 0;
};

// The shortcut of each ring, stored under "hotKey.<ring>", and their registration. A
// shortcut another program holds stays recorded and is listed in conflicts() until it is
// changed or a later registration succeeds. While suspended (paused) nothing is registered,
// so the keys reach other programs.
class HotKeyCenter : public QObject {
    Q_OBJECT

public:
    explicit HotKeyCenter(HotKeyGrabber& grabber, QObject* parent = nullptr);

    // Reads the stored shortcuts; one that doesn't decode counts as none.
    void load();

    const QHash<RingKind, HotKey>& hotKeys() const { return m_hotKeys; }
    const QSet<RingKind>& conflicts() const { return m_conflicts; }
    bool isSuspended() const { return m_suspended; }

    // Stores (or with none, removes) a ring's shortcut and registers again.
    void setHotKey(const std::optional<HotKey>& hotKey, RingKind ring);

    // The ring whose shortcut is this key with these modifiers.
    std::optional<RingKind> ringUsing(quint32 keyCode, quint32 carbonModifiers) const;

    void setSuspended(bool suspended);
    void registerAll();
    void unregisterAll();

    // The backend reports a press of the grabbed combination `id`.
    void triggered(int id);

    std::function<void(RingKind ring)> onTrigger;

    // The registration id of a ring: its place in the ring order.
    static int idFor(RingKind ring) { return int(ring); }

Q_SIGNALS:
    void changed();

private:
    HotKeyGrabber& m_grabber;
    QHash<RingKind, HotKey> m_hotKeys;
    QSet<RingKind> m_conflicts;
    QSet<int> m_registered;
    bool m_suspended = false;
};

}  // namespace wendrel
