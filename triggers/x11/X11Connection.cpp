#include "X11Connection.h"

#include <QAbstractEventDispatcher>
#include <QElapsedTimer>

#include <poll.h>

#include <X11/Xlib.h>

namespace wendrel {

std::unique_ptr<X11Connection> X11Connection::open(QObject* parent)
{
    Display* display = XOpenDisplay(nullptr);
    if (!display)
        return nullptr;
    return std::unique_ptr<X11Connection>(new X11Connection(display, parent));
}

X11Connection::X11Connection(Display* display, QObject* parent)
    : QObject(parent), m_display(display), m_root(DefaultRootWindow(display))
{
    m_window = XCreateSimpleWindow(m_display, m_root, -10, -10, 1, 1, 0, 0, 0);
    XSelectInput(m_display, m_window, PropertyChangeMask);
    m_notifier = std::make_unique<QSocketNotifier>(ConnectionNumber(m_display), QSocketNotifier::Read);
    connect(m_notifier.get(), &QSocketNotifier::activated, this, &X11Connection::dispatchPending);
    // Every round trip (asking where the pointer is, reading a property) reads whatever events
    // came before its reply into Xlib's queue, where the socket notifier never sees them: they
    // would wait for the next byte from the server. They are dispatched before the loop sleeps.
    if (QAbstractEventDispatcher* dispatcher = QAbstractEventDispatcher::instance()) {
        connect(dispatcher, &QAbstractEventDispatcher::aboutToBlock, this, [this] {
            if (XEventsQueued(m_display, QueuedAlready) > 0)
                dispatchPending();
        });
    }
    XFlush(m_display);
}

X11Connection::~X11Connection()
{
    m_notifier.reset();
    XDestroyWindow(m_display, m_window);
    XCloseDisplay(m_display);
}

Atom X11Connection::atom(const char* name)
{
    const QByteArray key(name);
    const auto found = m_atoms.constFind(key);
    if (found != m_atoms.cend())
        return *found;
    const Atom value = XInternAtom(m_display, name, False);
    m_atoms.insert(key, value);
    return value;
}

void X11Connection::dispatchPending()
{
    while (XPending(m_display) > 0) {
        XEvent event;
        XNextEvent(m_display, &event);
        if (onEvent)
            onEvent(event);
    }
}

bool X11Connection::waitForWindowEvent(int type, XEvent& event, int milliseconds)
{
    QElapsedTimer clock;
    clock.start();
    XFlush(m_display);
    while (true) {
        if (XCheckTypedWindowEvent(m_display, m_window, type, &event))
            return true;
        const qint64 left = milliseconds - clock.elapsed();
        if (left <= 0)
            return false;
        pollfd descriptor{ConnectionNumber(m_display), POLLIN, 0};
        ::poll(&descriptor, 1, int(left));
        // Reading moves whatever arrived into Xlib's queue, where the check above finds it.
        XEventsQueued(m_display, QueuedAfterReading);
    }
}

}  // namespace wendrel
