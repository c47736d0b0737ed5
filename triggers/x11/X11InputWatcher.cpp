#include "X11InputWatcher.h"

#include "X11Connection.h"
#include "X11InputState.h"
#include "operations/Logging.h"
#include "triggers/DragMonitor.h"
#include "triggers/TriggerLog.h"

#include <QCursor>

#include <X11/XKBlib.h>
#include <X11/extensions/XInput2.h>
#include <X11/extensions/Xfixes.h>
#include <X11/keysym.h>

namespace wendrel {

namespace {

constexpr int steadySampleMilliseconds = 16;

}  // namespace

X11InputWatcher::X11InputWatcher(X11Connection& connection, QObject* parent)
    : QObject(parent), m_connection(connection)
{
    m_steadySamples.setInterval(steadySampleMilliseconds);
    connect(&m_steadySamples, &QTimer::timeout, this, &X11InputWatcher::sample);
}

bool X11InputWatcher::selectInput()
{
    Display* display = m_connection.display();
    int fixesError = 0;
    if (!XFixesQueryExtension(display, &m_fixesEventBase, &fixesError)) {
        qCWarning(lcRing, "the X server has no XFixes: drags can't be watched");
        return false;
    }
    XFixesSelectSelectionInput(display, m_connection.root(), m_connection.atom("XdndSelection"),
                               XFixesSetSelectionOwnerNotifyMask);

    int event = 0;
    int error = 0;
    int major = 2;
    int minor = 2;
    if (!XQueryExtension(display, "XInputExtension", &m_inputOpcode, &event, &error)
        || XIQueryVersion(display, &major, &minor) != Success) {
        qCWarning(lcRing, "the X server has no XInput 2: drags can't be watched");
        return false;
    }
    unsigned char bits[XIMaskLen(XI_LASTEVENT)] = {};
    XISetMask(bits, XI_RawKeyPress);
    XISetMask(bits, XI_RawKeyRelease);
    XISetMask(bits, XI_RawButtonPress);
    XISetMask(bits, XI_RawButtonRelease);
    XIEventMask mask{XIAllMasterDevices, int(sizeof(bits)), bits};
    XISelectEvents(display, m_connection.root(), &mask, 1);

    // Start from the real state of the keys and the button.
    const PointerState state = queryPointerState(m_connection);
    m_heldModifiers = state.modifiers;
    m_buttonDown = state.buttonDown;
    XFlush(display);
    return true;
}

void X11InputWatcher::start(DragMonitor& monitor)
{
    m_monitor = &monitor;
    m_connection.dispatchPending();
    qCDebug(lcTriggers, "watching drags, modifier keys and the left button");
}

void X11InputWatcher::handleEvent(XEvent& event)
{
    if (event.type == m_fixesEventBase + XFixesSelectionNotify) {
        const auto& notify = reinterpret_cast<XFixesSelectionNotifyEvent&>(event);
        ++m_selectionChanges;
        m_selectionTime = notify.selection_timestamp;
        sample();
        return;
    }
    if (event.type != GenericEvent || event.xcookie.extension != m_inputOpcode)
        return;
    if (!XGetEventData(m_connection.display(), &event.xcookie))
        return;
    const int detail = static_cast<const XIRawEvent*>(event.xcookie.data)->detail;
    const int type = event.xcookie.evtype;
    XFreeEventData(m_connection.display(), &event.xcookie);
    handleRawEvent(type, detail);
}

void X11InputWatcher::handleRawEvent(int type, int detail)
{
    Display* display = m_connection.display();
    switch (type) {
    case XI_RawKeyPress:
    case XI_RawKeyRelease: {
        const KeySym keysym = XkbKeycodeToKeysym(display, KeyCode(detail), 0, 0);
        if (keysym == XK_Escape && type == XI_RawKeyPress && m_monitor) {
            m_monitor->cancelDrag(m_heldModifiers);
            qCDebug(lcTriggers, "Escape pressed");
        } else if (modifierForKeysym(keysym) != 0) {
            // Several keys may give the same modifier (both Shift keys): it is held while any is.
            if (type == XI_RawKeyPress)
                m_heldModifierKeys.insert(detail);
            else
                m_heldModifierKeys.erase(detail);
            ModifierFlags held = 0;
            for (int keycode : m_heldModifierKeys)
                held |= modifierForKeysym(XkbKeycodeToKeysym(display, KeyCode(keycode), 0, 0));
            m_heldModifiers = held;
            sample();
            qCDebug(lcTriggers, "modifier key %s, held: %s", type == XI_RawKeyPress ? "down" : "up",
                    held ? qUtf8Printable(nameLabel(held)) : "none");
        }
        break;
    }
    case XI_RawButtonPress:
    case XI_RawButtonRelease:
        if (detail == 1) {
            m_buttonDown = type == XI_RawButtonPress;
            sample();
            qCDebug(lcTriggers, "left button %s", m_buttonDown ? "down" : "up");
        }
        break;
    default:
        break;
    }
}

void X11InputWatcher::sample()
{
    if (!m_monitor)
        return;
    // The drag source holds the pointer grab, but the server still answers where the pointer is.
    m_buttonDown = queryPointerState(m_connection).buttonDown;
    m_monitor->poll({m_buttonDown, m_selectionChanges, m_heldModifiers, TriggerClock::now(), QCursor::pos()});
    if (m_monitor->needsSteadySamples()) {
        if (!m_steadySamples.isActive())
            m_steadySamples.start();
    } else {
        m_steadySamples.stop();
    }
}

}  // namespace wendrel
