#include "X11TriggerBackend.h"

#include "X11Connection.h"
#include "X11DragTransfer.h"
#include "X11HotKeyGrabber.h"
#include "X11InputWatcher.h"
#include "X11SelectionFetch.h"
#include "triggers/TriggerLog.h"

#include <QGuiApplication>
#include <QPointer>
#include <QTimer>

#include <X11/Xlib.h>
#include <X11/extensions/XTest.h>

namespace wendrel {

std::unique_ptr<X11TriggerBackend> X11TriggerBackend::create(QObject* parent)
{
    std::unique_ptr<X11Connection> connection = X11Connection::open();
    if (!connection)
        return nullptr;
    std::unique_ptr<X11TriggerBackend> backend(new X11TriggerBackend(std::move(connection), parent));
    if (!backend->m_input->selectInput())
        return nullptr;
    return backend;
}

X11TriggerBackend::X11TriggerBackend(std::unique_ptr<X11Connection> connection, QObject* parent)
    : TriggerBackend(parent),
      m_connection(std::move(connection)),
      m_hotKeys(std::make_unique<X11HotKeyGrabber>(*m_connection)),
      m_dragTransfer(std::make_unique<X11DragTransfer>(*m_connection)),
      m_input(std::make_unique<X11InputWatcher>(*m_connection)),
      m_selectionFetch(std::make_unique<X11SelectionFetch>(*m_connection))
{
    m_connection->onEvent = [this](XEvent& event) { handleEvent(event); };
}

X11TriggerBackend::~X11TriggerBackend() = default;

void X11TriggerBackend::handleEvent(XEvent& event)
{
    // Grabbed shortcuts come as core key presses; everything else is input for the watcher.
    if (event.type != KeyPress) {
        m_input->handleEvent(event);
        return;
    }
    if (const std::optional<int> id = m_hotKeys->idForPress(event.xkey.keycode, event.xkey.state)) {
        qCDebug(lcTriggers, "shortcut %d pressed", *id);
        Q_EMIT hotKeyPressed(*id);
    }
}

void X11TriggerBackend::start(DragMonitor& monitor) { m_input->start(monitor); }

qint64 X11TriggerBackend::selectionChanges() const { return m_input->selectionChanges(); }

std::optional<QStringList> X11TriggerBackend::readDragFiles()
{
    std::optional<QStringList> files = m_dragTransfer->readFiles(m_input->selectionTime());
    if (files)
        qCDebug(lcTriggers, "a new drag offers %ld file(s)", long(files->size()));
    else
        qCDebug(lcTriggers, "a new drag carries no files");
    return files;
}

HotKeyGrabber& X11TriggerBackend::hotKeyGrabber() { return *m_hotKeys; }

void X11TriggerBackend::nudgePointer()
{
    Display* display = m_connection->display();
    XTestFakeRelativeMotionEvent(display, 1, 0, CurrentTime);
    XFlush(display);
    QPointer<X11TriggerBackend> self(this);
    QTimer::singleShot(40, this, [self] {
        if (!self)
            return;
        XTestFakeRelativeMotionEvent(self->m_connection->display(), -1, 0, CurrentTime);
        XFlush(self->m_connection->display());
    });
}

bool X11TriggerBackend::isFileManagerActive() const { return m_selectionFetch->isFileManagerActive(); }

void X11TriggerBackend::fetchFileManagerSelection(std::function<void(const SelectionResult&)> done)
{
    m_selectionFetch->fetch(std::move(done));
}

std::unique_ptr<TriggerBackend> TriggerBackend::create(QObject* parent)
{
    if (QGuiApplication::platformName() != u"xcb")
        return nullptr;
    return X11TriggerBackend::create(parent);
}

}  // namespace wendrel
