#pragma once

#include "triggers/TriggerBackend.h"

#include <memory>

typedef union _XEvent XEvent;

namespace wendrel {

class X11Connection;
class X11DragTransfer;
class X11HotKeyGrabber;
class X11InputWatcher;
class X11SelectionFetch;

// The triggers on an X11 session, on one connection of their own: the input watcher feeds the
// drag monitor, the drag transfer reads what a new drag carries, the selection fetch asks the
// file manager for its files, and the grabber holds the shortcuts.
class X11TriggerBackend final : public TriggerBackend {
    Q_OBJECT

public:
    static std::unique_ptr<X11TriggerBackend> create(QObject* parent);
    ~X11TriggerBackend() override;

    void start(DragMonitor& monitor) override;
    qint64 selectionChanges() const override;
    std::optional<QStringList> readDragFiles() override;
    HotKeyGrabber& hotKeyGrabber() override;
    void nudgePointer() override;
    bool isFileManagerActive() const override;
    void fetchFileManagerSelection(std::function<void(const SelectionResult&)> done) override;

private:
    explicit X11TriggerBackend(std::unique_ptr<X11Connection> connection, QObject* parent);

    void handleEvent(XEvent& event);

    // The parts go before the connection they use.
    std::unique_ptr<X11Connection> m_connection;
    std::unique_ptr<X11HotKeyGrabber> m_hotKeys;
    std::unique_ptr<X11DragTransfer> m_dragTransfer;
    std::unique_ptr<X11InputWatcher> m_input;
    std::unique_ptr<X11SelectionFetch> m_selectionFetch;
};

}  // namespace wendrel
