#pragma once

#include <QByteArray>
#include <QStringList>

#include <optional>

typedef unsigned long Atom;

namespace wendrel {

class X11Connection;

// Reads what a drag under way carries, through the XdndSelection, the way a drop target would
// ask for it at the drop, but right at the drag's start.
class X11DragTransfer {
public:
    explicit X11DragTransfer(X11Connection& connection) : m_connection(connection) {}

    // The files of the drag that set the selection at `selectionTime`: a list (empty when the
    // drag announces files it can't hand over), or none for a drag that carries no files.
    std::optional<QStringList> readFiles(unsigned long selectionTime);

private:
    // The selection converted to `target`, none when the owner refuses or does not answer.
    std::optional<QByteArray> convert(const char* target, unsigned long selectionTime);
    // A value too large for one property, handed over in pieces (INCR).
    std::optional<QByteArray> receiveIncrementally(Atom property);
    bool announcesFiles(const QByteArray& targets);

    X11Connection& m_connection;
    bool m_sourceSilent = false;  // the drag being read left a question unanswered
};

}  // namespace wendrel
