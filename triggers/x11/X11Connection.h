#pragma once

#include <QByteArray>
#include <QHash>
#include <QObject>
#include <QSocketNotifier>

#include <functional>
#include <memory>

// The X11 types this header needs, declared as Xlib does: its headers define names (Status,
// None, KeyPress...) that clash with Qt's, so they are included last and only in .cpp files.
typedef struct _XDisplay Display;
typedef unsigned long XID;
typedef XID Window;
typedef unsigned long Atom;
typedef union _XEvent XEvent;

namespace wendrel {

// A connection of the triggers' own to the X server, served from the Qt event loop: events
// arrive through a socket notifier, never by polling.
class X11Connection : public QObject {
    Q_OBJECT

public:
    // None when the display can't be opened.
    static std::unique_ptr<X11Connection> open(QObject* parent = nullptr);
    ~X11Connection() override;

    Display* display() const { return m_display; }
    Window root() const { return m_root; }

    // A hidden window of ours, the requestor for selections.
    Window window() const { return m_window; }

    Atom atom(const char* name);

    // Every event that arrives is handed to this.
    std::function<void(XEvent&)> onEvent;

    // Reads and dispatches whatever is waiting.
    void dispatchPending();

    // Waits up to `milliseconds` for an event on our window of this type, leaving all others
    // queued for normal dispatch. True when one came.
    bool waitForWindowEvent(int type, XEvent& event, int milliseconds);

private:
    X11Connection(Display* display, QObject* parent);

    Display* m_display;
    Window m_root;
    Window m_window;
    std::unique_ptr<QSocketNotifier> m_notifier;
    QHash<QByteArray, Atom> m_atoms;
};

}  // namespace wendrel
