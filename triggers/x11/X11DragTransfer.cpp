#include "X11DragTransfer.h"

#include "X11Connection.h"
#include "triggers/FileLists.h"
#include "triggers/TriggerLog.h"

#include <X11/Xatom.h>
#include <X11/Xlib.h>

namespace wendrel {

namespace {

// A drag source answers from its own event loop, which on a busy machine may not run for a
// good while; one that never answers costs this wait once, as reading stops at its silence.
constexpr int selectionTimeoutMilliseconds = 2000;
constexpr long largestPropertyLongs = 16 * 1024 * 1024;

struct PropertyValue {
    Atom type = None;
    QByteArray data;
};

// Reads and deletes the property; deleting it tells an INCR sender to send the next piece.
std::optional<PropertyValue> takeProperty(X11Connection& connection, Atom property)
{
    Atom type = None;
    int format = 0;
    unsigned long items = 0;
    unsigned long remaining = 0;
    unsigned char* bytes = nullptr;
    if (XGetWindowProperty(connection.display(), connection.window(), property, 0, largestPropertyLongs, True,
                           AnyPropertyType, &type, &format, &items, &remaining, &bytes)
        != Success)
        return std::nullopt;
    PropertyValue value{type, {}};
    if (bytes) {
        // Xlib hands 32-bit items over as longs.
        const qsizetype itemSize = format == 32 ? qsizetype(sizeof(long)) : format / 8;
        value.data = QByteArray(reinterpret_cast<const char*>(bytes), qsizetype(items) * itemSize);
        XFree(bytes);
    }
    return value;
}

}  // namespace

std::optional<QStringList> X11DragTransfer::readFiles(unsigned long selectionTime)
{
    m_sourceSilent = false;
    if (const std::optional<QByteArray> uris = convert("text/uri-list", selectionTime))
        return localFilesFromUriList(*uris);
    if (m_sourceSilent)
        return std::nullopt;
    if (const std::optional<QByteArray> copied = convert("x-special/gnome-copied-files", selectionTime))
        return localFilesFromGnomeCopiedFiles(*copied);
    if (m_sourceSilent)
        return std::nullopt;
    // No list handed over: a file drag only if it announces files among its targets.
    const std::optional<QByteArray> targets = convert("TARGETS", selectionTime);
    if (targets && announcesFiles(*targets))
        return QStringList{};
    return std::nullopt;
}

std::optional<QByteArray> X11DragTransfer::convert(const char* target, unsigned long selectionTime)
{
    const Atom property = m_connection.atom("WENDREL_DRAG");
    XConvertSelection(m_connection.display(), m_connection.atom("XdndSelection"), m_connection.atom(target),
                      property, m_connection.window(), selectionTime);
    XEvent reply;
    // A late answer about an earlier drag may still be queued: only this drag's counts.
    do {
        if (!m_connection.waitForWindowEvent(SelectionNotify, reply, selectionTimeoutMilliseconds)) {
            m_sourceSilent = true;
            qCDebug(lcTriggers, "the drag source did not answer for %s", target);
            return std::nullopt;
        }
    } while (reply.xselection.time != selectionTime);
    if (reply.xselection.property == None) {
        qCDebug(lcTriggers, "the drag source refused %s", target);
        return std::nullopt;
    }
    const std::optional<PropertyValue> value = takeProperty(m_connection, property);
    if (!value)
        return std::nullopt;
    if (value->type == m_connection.atom("INCR"))
        return receiveIncrementally(property);
    return value->data;
}

std::optional<QByteArray> X11DragTransfer::receiveIncrementally(Atom property)
{
    // Each new value of the property is one piece, until an empty one.
    QByteArray data;
    while (true) {
        XEvent change;
        do {
            if (!m_connection.waitForWindowEvent(PropertyNotify, change, selectionTimeoutMilliseconds))
                return std::nullopt;
        } while (change.xproperty.atom != property || change.xproperty.state != PropertyNewValue);
        const std::optional<PropertyValue> piece = takeProperty(m_connection, property);
        if (!piece)
            return std::nullopt;
        if (piece->data.isEmpty())
            return data;
        data.append(piece->data);
    }
}

bool X11DragTransfer::announcesFiles(const QByteArray& targets)
{
    const auto* atoms = reinterpret_cast<const Atom*>(targets.constData());
    const qsizetype count = targets.size() / qsizetype(sizeof(Atom));
    for (qsizetype index = 0; index < count; ++index) {
        if (atoms[index] == m_connection.atom("text/uri-list")
            || atoms[index] == m_connection.atom("x-special/gnome-copied-files"))
            return true;
    }
    return false;
}

}  // namespace wendrel
