#include "X11SelectionFetch.h"

#include "X11Connection.h"
#include "triggers/FileLists.h"
#include "triggers/FileManagers.h"
#include "triggers/TriggerLog.h"

#include <QClipboard>
#include <QGuiApplication>
#include <QMimeData>
#include <QTimer>

#include <X11/Xatom.h>
#include <X11/Xutil.h>
#include <X11/extensions/XTest.h>
#include <X11/keysym.h>

#include <memory>

namespace wendrel {

namespace {

// From Ctrl+C going out: time for a busy file manager to copy and for us to read it.
constexpr int clipboardTimeoutMilliseconds = 3000;
// Until every key is up: a held modifier would turn Ctrl+C into another shortcut, and while the
// shortcut's own key is down its grab sends every key to us instead of the file manager. A
// busy machine can take a while to deliver the releases.
constexpr int keysUpPollMilliseconds = 20;
constexpr int keysUpAttempts = 150;

bool anyKeyDown(Display* display)
{
    char keys[32] = {};
    XQueryKeymap(display, keys);
    for (const char bits : keys) {
        if (bits != 0)
            return true;
    }
    return false;
}

std::unique_ptr<QMimeData> copyOf(const QMimeData& data)
{
    auto copy = std::make_unique<QMimeData>();
    for (const QString& format : data.formats())
        copy->setData(format, data.data(format));
    return copy;
}

// The files on the clipboard once a file manager has copied its selection; none while it
// holds something else.
std::optional<QStringList> copiedFiles(const QMimeData& copied)
{
    const QString gnome = QStringLiteral("x-special/gnome-copied-files");
    if (copied.hasFormat(gnome))
        return localFilesFromGnomeCopiedFiles(copied.data(gnome));
    const QString uris = QStringLiteral("text/uri-list");
    if (copied.hasFormat(uris))
        return localFilesFromUriList(copied.data(uris));
    return std::nullopt;
}

}  // namespace

X11SelectionFetch::X11SelectionFetch(X11Connection& connection, QObject* parent)
    : QObject(parent), m_connection(connection)
{
}

bool X11SelectionFetch::isFileManagerActive() const
{
    Display* display = m_connection.display();
    Atom type = None;
    int format = 0;
    unsigned long items = 0;
    unsigned long remaining = 0;
    unsigned char* bytes = nullptr;
    if (XGetWindowProperty(display, m_connection.root(), m_connection.atom("_NET_ACTIVE_WINDOW"), 0, 1, False,
                           XA_WINDOW, &type, &format, &items, &remaining, &bytes)
            != Success
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
    const bool isFileManager =
        isFileManagerWindowClass(QString::fromLocal8Bit(hint.res_name), QString::fromLocal8Bit(hint.res_class));
    XFree(hint.res_name);
    XFree(hint.res_class);
    return isFileManager;
}

void X11SelectionFetch::fetch(std::function<void(const SelectionResult&)> done)
{
    qCDebug(lcTriggers, "asking the file manager for its selection");
    QClipboard* clipboard = QGuiApplication::clipboard();
    // What the clipboard held goes back there afterwards.
    std::shared_ptr<const QMimeData> previous;
    if (const QMimeData* current = clipboard->mimeData())
        previous = copyOf(*current);
    // Everything this fetch leaves waiting (the clipboard watch, the time limit, the wait for
    // keys to come up) belongs to `context`, and goes with it when the fetch is over.
    auto* context = new QObject(this);
    auto finished = std::make_shared<bool>(false);
    const auto finish = [clipboard, previous, context, finished, done](const SelectionResult& result) {
        if (*finished)
            return;
        *finished = true;
        if (previous && !previous->formats().isEmpty())
            clipboard->setMimeData(copyOf(*previous).release());
        else
            clipboard->clear();
        context->deleteLater();
        done(result);
    };
    connect(clipboard, &QClipboard::dataChanged, context, [clipboard, finish] {
        if (const QMimeData* copied = clipboard->mimeData()) {
            if (const std::optional<QStringList> files = copiedFiles(*copied))
                finish(*files);
        }
    });
    sendCopyOnceKeysAreUp(context, keysUpAttempts, [context, finish] {
        QTimer::singleShot(clipboardTimeoutMilliseconds, context, [finish] {
            finish(QStringLiteral("the file manager did not copy its selection"));
        });
    });
}

void X11SelectionFetch::sendCopyOnceKeysAreUp(QObject* context, int attemptsLeft, std::function<void()> sent)
{
    if (anyKeyDown(m_connection.display()) && attemptsLeft > 0) {
        QTimer::singleShot(keysUpPollMilliseconds, context, [this, context, attemptsLeft, sent = std::move(sent)] {
            sendCopyOnceKeysAreUp(context, attemptsLeft - 1, sent);
        });
        return;
    }
    Display* display = m_connection.display();
    const KeyCode control = XKeysymToKeycode(display, XK_Control_L);
    const KeyCode c = XKeysymToKeycode(display, XK_c);
    XTestFakeKeyEvent(display, control, True, CurrentTime);
    XTestFakeKeyEvent(display, c, True, CurrentTime);
    XTestFakeKeyEvent(display, c, False, CurrentTime);
    XTestFakeKeyEvent(display, control, False, CurrentTime);
    XFlush(display);
    sent();
}

}  // namespace wendrel
