#pragma once

#include "DragMonitor.h"
#include "HotKeyCenter.h"

#include <QObject>
#include <QStringList>

#include <functional>
#include <memory>
#include <variant>

namespace wendrel {

// The file manager's selection, or why it could not be read.
using SelectionResult = std::variant<QStringList, QString>;

// What the windowing system gives the triggers: the input that feeds the drag monitor,
// global shortcuts, a nudge of the pointer, and the file manager's selection. Only the X11
// session has one; elsewhere (Wayland) create() returns none and the ring opens from the
// command line and the file-manager actions instead.
class TriggerBackend : public QObject {
    Q_OBJECT

public:
    using QObject::QObject;

    // The backend for this session, or none where watching other programs' drags is impossible.
    static std::unique_ptr<TriggerBackend> create(QObject* parent = nullptr);

    // Starts feeding `monitor`: no busy polling while nothing happens.
    virtual void start(DragMonitor& monitor) = 0;

    // The drag selection's change count right now (new drags change it).
    virtual qint64 selectionChanges() const = 0;

    // The files of the drag that just began: a list (empty when the drag announces files it
    // can't hand over), or none for a drag that carries no files.
    virtual std::optional<QStringList> readDragFiles() = 0;

    virtual HotKeyGrabber& hotKeyGrabber() = 0;

    // Moves the pointer by a pixel and back, so a drag source notices a window that appeared
    // under a still pointer.
    virtual void nudgePointer() = 0;

    // Whether the active window belongs to a known file manager.
    virtual bool isFileManagerActive() const = 0;

    // Asks the active file manager for its selection; `done` is called once, on the event loop.
    virtual void fetchFileManagerSelection(std::function<void(const SelectionResult&)> done) = 0;

Q_SIGNALS:
    // A grabbed shortcut was pressed.
    void hotKeyPressed(int id);
};

}  // namespace wendrel
