#pragma once

#include "triggers/TriggerBackend.h"

#include <QObject>

#include <functional>

namespace wendrel {

class X11Connection;

// The file manager's selection, asked for the one way every file manager understands: a
// synthetic Ctrl+C, then the files it puts on the clipboard. The clipboard gets back what it
// held before.
class X11SelectionFetch : public QObject {
public:
    X11SelectionFetch(X11Connection& connection, QObject* parent = nullptr);

    // Whether the active window belongs to a known file manager.
    bool isFileManagerActive() const;

    // `done` is called once, on the event loop: with the files, or with why there are none.
    void fetch(std::function<void(const SelectionResult&)> done);

private:
    // The keys of the shortcut that asked may still be down; Ctrl+C must arrive alone. Waits
    // for them (`attemptsLeft` more looks) on `context`, the fetch's own lifetime, and calls
    // `sent` once Ctrl+C is out.
    void sendCopyOnceKeysAreUp(QObject* context, int attemptsLeft, std::function<void()> sent);

    X11Connection& m_connection;
};

}  // namespace wendrel
