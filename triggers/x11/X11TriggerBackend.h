#pragma once

#include "triggers/TriggerBackend.h"

#include <QTimer>

#include <memory>
#include <optional>
#include <set>

typedef union _XEvent XEvent;

namespace wendrel {

class X11Connection;
class X11HotKeyGrabber;

// The triggers on an X11 session.
//
// A new drag shows as a change of owner of the XdndSelection (XFixes), counted one by one:
// toolkits reuse one owner window for every drag, so watching the owner would miss new ones.
// Keys and the left button come as XInput2 raw events on the root window, which arrive even
// while the drag source holds the pointer grab and catch taps too short to be seen by asking
// for the keyboard's state. While the button is down the monitor is also sampled at 60 Hz;
// otherwise nothing runs until the server sends something.
class X11TriggerBackend final : public TriggerBackend {
    Q_OBJECT

public:
    static std::unique_ptr<X11TriggerBackend> create(QObject* parent);
    ~X11TriggerBackend() override;

    void start(DragMonitor& monitor) override;
    qint64 selectionChanges() const override { return m_selectionChanges; }
    std::optional<QStringList> readDragFiles() override;
    HotKeyGrabber& hotKeyGrabber() override;
    void nudgePointer() override;
    bool isFileManagerActive() const override;
    void fetchFileManagerSelection(std::function<void(const SelectionResult&)> done) override;

private:
    explicit X11TriggerBackend(std::unique_ptr<X11Connection> connection, QObject* parent);

    bool selectInput();
    void handleEvent(XEvent& event);
    void sample();
    ModifierFlags modifiersFromServer(bool* buttonDown);
    std::optional<QByteArray> convertDragSelection(const char* target);
    std::optional<QStringList> offeredDragFiles();

    std::unique_ptr<X11Connection> m_connection;
    std::unique_ptr<X11HotKeyGrabber> m_hotKeys;
    DragMonitor* m_monitor = nullptr;
    QTimer m_steadySamples;
    int m_fixesEventBase = 0;
    int m_inputOpcode = 0;
    qint64 m_selectionChanges = 0;
    unsigned long m_selectionTime = 0;
    bool m_buttonDown = false;
    bool m_dragSourceSilent = false;  // the drag being read left a question unanswered
    std::set<int> m_heldModifierKeys;  // keycodes of modifier keys now down
    ModifierFlags m_heldModifiers = 0;
};

}  // namespace wendrel
