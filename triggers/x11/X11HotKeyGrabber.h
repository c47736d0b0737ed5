#pragma once

#include "triggers/HotKeyCenter.h"

#include <QHash>
#include <QList>

#include <functional>

namespace wendrel {

class X11Connection;

// Global shortcuts as key grabs on the root window, once per state of Caps Lock and Num Lock,
// so a shortcut works whatever those locks are. A grab another client holds makes the X
// server answer BadAccess: that shortcut is taken.
class X11HotKeyGrabber final : public HotKeyGrabber {
public:
    explicit X11HotKeyGrabber(X11Connection& connection);

    bool grab(int id, const HotKey& hotKey) override;
    void release(int id) override;

    // The id of the grab that a key press on the root window belongs to, if any.
    std::optional<int> idForPress(unsigned int keycode, unsigned int state) const;

private:
    struct Grab {
        unsigned int keycode;
        unsigned int modifiers;
    };

    X11Connection& m_connection;
    QHash<int, Grab> m_grabs;
};

// The X keysym for a portable key code, or 0.
unsigned long keysymForPortableCode(quint32 keyCode);

}  // namespace wendrel
