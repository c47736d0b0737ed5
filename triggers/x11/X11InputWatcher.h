#pragma once

#include "triggers/Modifiers.h"

#include <QObject>
#include <QTimer>

#include <set>

typedef union _XEvent XEvent;

namespace wendrel {

class DragMonitor;
class X11Connection;

// Feeds the drag monitor from the X server.
//
// A new drag shows as a change of owner of the XdndSelection (XFixes), counted one by one:
// toolkits reuse one owner window for every drag, so watching the owner would miss new ones.
// Keys and the left button come as XInput2 raw events on the root window, which arrive even
// while the drag source holds the pointer grab and catch taps too short to be seen by asking
// for the keyboard's state. While the button is down the monitor is also sampled at 60 Hz;
// otherwise nothing runs until the server sends something.
class X11InputWatcher : public QObject {
public:
    X11InputWatcher(X11Connection& connection, QObject* parent = nullptr);

    // Asks the server for the events above; false when it lacks XFixes or XInput 2.
    bool selectInput();

    void start(DragMonitor& monitor);

    // Takes the events of the extensions selected above; others are left alone.
    void handleEvent(XEvent& event);

    qint64 selectionChanges() const { return m_selectionChanges; }

    // The server's time of the last drag selection change: converting the selection with it
    // asks the drag that changed it, never a later one.
    unsigned long selectionTime() const { return m_selectionTime; }

private:
    void handleRawEvent(int type, int detail);
    void sample();

    X11Connection& m_connection;
    DragMonitor* m_monitor = nullptr;
    QTimer m_steadySamples;
    int m_fixesEventBase = 0;
    int m_inputOpcode = 0;
    qint64 m_selectionChanges = 0;
    unsigned long m_selectionTime = 0;
    bool m_buttonDown = false;
    std::set<int> m_heldModifierKeys;  // keycodes of modifier keys now down
    ModifierFlags m_heldModifiers = 0;
};

}  // namespace wendrel
