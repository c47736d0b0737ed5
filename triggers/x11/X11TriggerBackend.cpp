#include "X11TriggerBackend.h"

#include "X11Connection.h"
#include "X11HotKeyGrabber.h"
#include "operations/Logging.h"
#include "triggers/TriggerLog.h"

#include <QClipboard>
#include <QCursor>
#include <QGuiApplication>
#include <QMimeData>
#include <QPointer>
#include <QUrl>

#include <X11/XKBlib.h>
#include <X11/Xatom.h>
#include <X11/Xutil.h>
#include <X11/extensions/XInput2.h>
#include <X11/extensions/XTest.h>
#include <X11/extensions/Xfixes.h>
#include <X11/keysym.h>

namespace wendrel {

namespace {

constexpr int steadySampleMilliseconds = 16;
// A drag source answers from its own event loop, which on a busy machine may not run for a
// good while; one that never answers costs this wait once, as reading stops at its silence.
constexpr int selectionTimeoutMilliseconds = 2000;
constexpr int clipboardTimeoutMilliseconds = 1200;

// File managers by the class or name in WM_CLASS, lower-cased.
const QStringList fileManagers{
    QStringLiteral("nautilus"), QStringLiteral("org.gnome.nautilus"), QStringLiteral("nemo"),
    QStringLiteral("caja"),     QStringLiteral("dolphin"),            QStringLiteral("thunar"),
    QStringLiteral("pcmanfm"),  QStringLiteral("pcmanfm-qt"),         QStringLiteral("spacefm"),
    QStringLiteral("peony"),    QStringLiteral("io.elementary.files"), QStringLiteral("konqueror"),
    QStringLiteral("doublecmd"), QStringLiteral("krusader"),
};

ModifierFlags modifierForKeysym(KeySym keysym)
{
    switch (keysym) {
    case XK_Shift_L:
    case XK_Shift_R: return Modifier::shift;
    case XK_Control_L:
    case XK_Control_R: return Modifier::control;
    case XK_Alt_L:
    case XK_Alt_R:
    case XK_Meta_L:
    case XK_Meta_R: return Modifier::option;
    case XK_Super_L:
    case XK_Super_R: return Modifier::command;
    default: return 0;
    }
}

ModifierFlags modifiersFromMask(unsigned int mask)
{
    ModifierFlags flags = 0;
    if (mask & ShiftMask)
        flags |= Modifier::shift;
    if (mask & ControlMask)
        flags |= Modifier::control;
    if (mask & Mod1Mask)
        flags |= Modifier::option;
    if (mask & Mod4Mask)
        flags |= Modifier::command;
    return flags;
}

// "file:///home/me/a%20b.png" lines; comments and anything that is not a local file skipped.
QStringList localFilesFromUriList(const QByteArray& text)
{
    QStringList files;
    for (const QByteArray& line : text.split('\n')) {
        const QByteArray trimmed = line.trimmed();
        if (trimmed.isEmpty() || trimmed.startsWith('#'))
            continue;
        const QUrl url = QUrl::fromEncoded(trimmed);
        if (url.isLocalFile())
            files.append(url.toLocalFile());
    }
    return files;
}

// GNOME's form: "copy" or "cut" on the first line, then the URIs.
QStringList localFilesFromGnomeCopiedFiles(const QByteArray& text)
{
    const qsizetype firstBreak = text.indexOf('\n');
    return firstBreak < 0 ? QStringList{} : localFilesFromUriList(text.mid(firstBreak + 1));
}

}  // namespace

std::unique_ptr<X11TriggerBackend> X11TriggerBackend::create(QObject* parent)
{
    std::unique_ptr<X11Connection> connection = X11Connection::open();
    if (!connection)
        return nullptr;
    std::unique_ptr<X11TriggerBackend> backend(new X11TriggerBackend(std::move(connection), parent));
    if (!backend->selectInput())
        return nullptr;
    return backend;
}

X11TriggerBackend::X11TriggerBackend(std::unique_ptr<X11Connection> connection, QObject* parent)
    : TriggerBackend(parent), m_connection(std::move(connection))
{
    m_hotKeys = std::make_unique<X11HotKeyGrabber>(*m_connection);
    m_connection->onEvent = [this](XEvent& event) { handleEvent(event); };
    m_steadySamples.setInterval(steadySampleMilliseconds);
    connect(&m_steadySamples, &QTimer::timeout, this, &X11TriggerBackend::sample);
}

X11TriggerBackend::~X11TriggerBackend() = default;

bool X11TriggerBackend::selectInput()
{
    Display* display = m_connection->display();
    int fixesError = 0;
    if (!XFixesQueryExtension(display, &m_fixesEventBase, &fixesError)) {
        qCWarning(lcRing, "the X server has no XFixes: drags can't be watched");
        return false;
    }
    XFixesSelectSelectionInput(display, m_connection->root(), m_connection->atom("XdndSelection"),
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
    XISelectEvents(display, m_connection->root(), &mask, 1);

    // Start from the real state of the keys and the button.
    bool buttonDown = false;
    m_heldModifiers = modifiersFromServer(&buttonDown);
    m_buttonDown = buttonDown;
    XFlush(display);
    return true;
}

void X11TriggerBackend::start(DragMonitor& monitor)
{
    m_monitor = &monitor;
    m_connection->dispatchPending();
    qCDebug(lcTriggers, "watching drags, modifier keys and the left button");
}

HotKeyGrabber& X11TriggerBackend::hotKeyGrabber() { return *m_hotKeys; }

ModifierFlags X11TriggerBackend::modifiersFromServer(bool* buttonDown)
{
    Window rootReturn = 0;
    Window child = 0;
    int rootX = 0;
    int rootY = 0;
    int windowX = 0;
    int windowY = 0;
    unsigned int mask = 0;
    XQueryPointer(m_connection->display(), m_connection->root(), &rootReturn, &child, &rootX, &rootY, &windowX,
                  &windowY, &mask);
    if (buttonDown)
        *buttonDown = mask & Button1Mask;
    return modifiersFromMask(mask);
}

void X11TriggerBackend::handleEvent(XEvent& event)
{
    if (event.type == m_fixesEventBase + XFixesSelectionNotify) {
        const auto& notify = reinterpret_cast<XFixesSelectionNotifyEvent&>(event);
        ++m_selectionChanges;
        m_selectionTime = notify.selection_timestamp;
        sample();
        return;
    }
    if (event.type == KeyPress) {
        if (const std::optional<int> id = m_hotKeys->idForPress(event.xkey.keycode, event.xkey.state)) {
            qCDebug(lcTriggers, "shortcut %d pressed", *id);
            Q_EMIT hotKeyPressed(*id);
        }
        return;
    }
    if (event.type != GenericEvent || event.xcookie.extension != m_inputOpcode)
        return;
    if (!XGetEventData(m_connection->display(), &event.xcookie))
        return;
    const auto* raw = static_cast<const XIRawEvent*>(event.xcookie.data);
    switch (event.xcookie.evtype) {
    case XI_RawKeyPress:
    case XI_RawKeyRelease: {
        const KeySym keysym = XkbKeycodeToKeysym(m_connection->display(), KeyCode(raw->detail), 0, 0);
        if (keysym == XK_Escape && event.xcookie.evtype == XI_RawKeyPress && m_monitor) {
            m_monitor->cancelDrag(m_heldModifiers);
            qCDebug(lcTriggers, "Escape pressed");
        } else if (modifierForKeysym(keysym) != 0) {
            // Several keys may give the same modifier (both Shift keys): it is held while any is.
            if (event.xcookie.evtype == XI_RawKeyPress)
                m_heldModifierKeys.insert(raw->detail);
            else
                m_heldModifierKeys.erase(raw->detail);
            ModifierFlags held = 0;
            for (int keycode : m_heldModifierKeys)
                held |= modifierForKeysym(XkbKeycodeToKeysym(m_connection->display(), KeyCode(keycode), 0, 0));
            m_heldModifiers = held;
            sample();
            qCDebug(lcTriggers, "modifier key %s, held: %s", event.xcookie.evtype == XI_RawKeyPress ? "down" : "up",
                    held ? qUtf8Printable(nameLabel(held)) : "none");
        }
        break;
    }
    case XI_RawButtonPress:
    case XI_RawButtonRelease:
        if (raw->detail == 1) {
            m_buttonDown = event.xcookie.evtype == XI_RawButtonPress;
            sample();
            qCDebug(lcTriggers, "left button %s", m_buttonDown ? "down" : "up");
        }
        break;
    default:
        break;
    }
    XFreeEventData(m_connection->display(), &event.xcookie);
}

void X11TriggerBackend::sample()
{
    if (!m_monitor)
        return;
    // The drag source holds the pointer grab, but the server still answers where the pointer is.
    bool buttonDown = m_buttonDown;
    modifiersFromServer(&buttonDown);
    m_buttonDown = buttonDown;
    m_monitor->poll({m_buttonDown, m_selectionChanges, m_heldModifiers, TriggerClock::now(), QCursor::pos()});
    if (m_monitor->needsSteadySamples()) {
        if (!m_steadySamples.isActive())
            m_steadySamples.start();
    } else {
        m_steadySamples.stop();
    }
}

std::optional<QByteArray> X11TriggerBackend::convertDragSelection(const char* target)
{
    Display* display = m_connection->display();
    const Atom property = m_connection->atom("WENDREL_DRAG");
    XConvertSelection(display, m_connection->atom("XdndSelection"), m_connection->atom(target), property,
                      m_connection->window(), m_selectionTime);
    XEvent reply;
    // A late answer about an earlier drag may still be queued: only this drag's counts.
    do {
        if (!m_connection->waitForWindowEvent(SelectionNotify, reply, selectionTimeoutMilliseconds)) {
            m_dragSourceSilent = true;
            qCDebug(lcTriggers, "the drag source did not answer for %s", target);
            return std::nullopt;
        }
    } while (reply.xselection.time != m_selectionTime);
    if (reply.xselection.property == None) {
        qCDebug(lcTriggers, "the drag source refused %s", target);
        return std::nullopt;
    }

    QByteArray data;
    Atom type = None;
    int format = 0;
    unsigned long items = 0;
    unsigned long remaining = 0;
    unsigned char* bytes = nullptr;
    if (XGetWindowProperty(display, m_connection->window(), property, 0, 16 * 1024 * 1024, True, AnyPropertyType,
                           &type, &format, &items, &remaining, &bytes) != Success)
        return std::nullopt;
    const bool incremental = type == m_connection->atom("INCR");
    if (!incremental && bytes)
        data = QByteArray(reinterpret_cast<const char*>(bytes), qsizetype(items * (format / 8)));
    if (bytes)
        XFree(bytes);
    if (!incremental)
        return data;

    // Long lists come in pieces: each new value of the property is one, until an empty one.
    while (true) {
        XEvent change;
        do {
            if (!m_connection->waitForWindowEvent(PropertyNotify, change, selectionTimeoutMilliseconds))
                return std::nullopt;
        } while (change.xproperty.atom != property || change.xproperty.state != PropertyNewValue);
        bytes = nullptr;
        if (XGetWindowProperty(display, m_connection->window(), property, 0, 16 * 1024 * 1024, True,
                               AnyPropertyType, &type, &format, &items, &remaining, &bytes) != Success)
            return std::nullopt;
        const qsizetype length = qsizetype(items * (format / 8));
        if (bytes) {
            data.append(reinterpret_cast<const char*>(bytes), length);
            XFree(bytes);
        }
        if (length == 0)
            return data;
    }
}

std::optional<QStringList> X11TriggerBackend::readDragFiles()
{
    std::optional<QStringList> files = offeredDragFiles();
    if (files)
        qCDebug(lcTriggers, "a new drag offers %ld file(s)", long(files->size()));
    else
        qCDebug(lcTriggers, "a new drag carries no files");
    return files;
}

std::optional<QStringList> X11TriggerBackend::offeredDragFiles()
{
    m_dragSourceSilent = false;
    if (const std::optional<QByteArray> uris = convertDragSelection("text/uri-list"))
        return localFilesFromUriList(*uris);
    if (m_dragSourceSilent)
        return std::nullopt;
    if (const std::optional<QByteArray> copied = convertDragSelection("x-special/gnome-copied-files"))
        return localFilesFromGnomeCopiedFiles(*copied);
    if (m_dragSourceSilent)
        return std::nullopt;
    // No list handed over: a file drag only if it announces files among its targets.
    const std::optional<QByteArray> targets = convertDragSelection("TARGETS");
    if (!targets)
        return std::nullopt;
    const auto* atoms = reinterpret_cast<const Atom*>(targets->constData());
    const qsizetype count = targets->size() / qsizetype(sizeof(Atom));
    for (qsizetype index = 0; index < count; ++index) {
        if (atoms[index] == m_connection->atom("text/uri-list")
            || atoms[index] == m_connection->atom("x-special/gnome-copied-files"))
            return QStringList{};
    }
    return std::nullopt;
}

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

bool X11TriggerBackend::isFileManagerActive() const
{
    Display* display = m_connection->display();
    Atom type = None;
    int format = 0;
    unsigned long items = 0;
    unsigned long remaining = 0;
    unsigned char* bytes = nullptr;
    if (XGetWindowProperty(display, m_connection->root(), m_connection->atom("_NET_ACTIVE_WINDOW"), 0, 1, False,
                           XA_WINDOW, &type, &format, &items, &remaining, &bytes) != Success
        || !bytes || items == 0) {
        if (bytes)
            XFree(bytes);
        return false;
    }
    const Window active = *reinterpret_cast<Window*>(bytes);
    XFree(bytes);
    XClassHint hint{};
    if (active == None || !XGetClassHint(display, active, &hint))
        return false;
    const QString name = QString::fromLocal8Bit(hint.res_name).toLower();
    const QString className = QString::fromLocal8Bit(hint.res_class).toLower();
    XFree(hint.res_name);
    XFree(hint.res_class);
    return fileManagers.contains(name) || fileManagers.contains(className);
}

void X11TriggerBackend::fetchFileManagerSelection(std::function<void(const SelectionResult&)> done)
{
    QClipboard* clipboard = QGuiApplication::clipboard();
    // What the clipboard held goes back there afterwards.
    auto previous = std::make_shared<QMimeData>();
    if (const QMimeData* current = clipboard->mimeData()) {
        for (const QString& format : current->formats())
            previous->setData(format, current->data(format));
    }
    qCDebug(lcTriggers, "asking the file manager for its selection");
    auto context = new QObject(this);
    auto finished = std::make_shared<bool>(false);
    const auto finish = [clipboard, previous, context, finished, done](const SelectionResult& result) {
        if (*finished)
            return;
        *finished = true;
        auto* restored = new QMimeData;
        for (const QString& format : previous->formats())
            restored->setData(format, previous->data(format));
        if (restored->formats().isEmpty()) {
            delete restored;
            clipboard->clear();
        } else {
            clipboard->setMimeData(restored);
        }
        context->deleteLater();
        done(result);
    };
    connect(clipboard, &QClipboard::dataChanged, context, [clipboard, finish] {
        const QMimeData* copied = clipboard->mimeData();
        if (!copied)
            return;
        if (copied->hasFormat(QStringLiteral("x-special/gnome-copied-files")))
            finish(localFilesFromGnomeCopiedFiles(copied->data(QStringLiteral("x-special/gnome-copied-files"))));
        else if (copied->hasFormat(QStringLiteral("text/uri-list")))
            finish(localFilesFromUriList(copied->data(QStringLiteral("text/uri-list"))));
    });
    QTimer::singleShot(clipboardTimeoutMilliseconds, context, [finish] {
        finish(QStringLiteral("the file manager did not copy its selection"));
    });

    // The keys of the shortcut that asked may still be down; Ctrl+C must arrive alone.
    auto sendCopy = std::make_shared<std::function<void(int)>>();
    *sendCopy = [this, context, sendCopy](int attemptsLeft) {
        if (modifiersFromServer(nullptr) != 0 && attemptsLeft > 0) {
            QTimer::singleShot(20, context, [sendCopy, attemptsLeft] { (*sendCopy)(attemptsLeft - 1); });
            return;
        }
        Display* display = m_connection->display();
        const KeyCode control = XKeysymToKeycode(display, XK_Control_L);
        const KeyCode c = XKeysymToKeycode(display, XK_c);
        XTestFakeKeyEvent(display, control, True, CurrentTime);
        XTestFakeKeyEvent(display, c, True, CurrentTime);
        XTestFakeKeyEvent(display, c, False, CurrentTime);
        XTestFakeKeyEvent(display, control, False, CurrentTime);
        XFlush(display);
    };
    (*sendCopy)(50);
}

std::unique_ptr<TriggerBackend> TriggerBackend::create(QObject* parent)
{
    if (QGuiApplication::platformName() != u"xcb")
        return nullptr;
    return X11TriggerBackend::create(parent);
}

}  // namespace wendrel
