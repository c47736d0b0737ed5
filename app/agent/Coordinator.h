#pragma once

#include "AgentChannel.h"
#include "JobEventBus.h"
#include "TrayMenu.h"
#include "app/shell/PauseManager.h"
#include "operations/FolderAccessStore.h"
#include "operations/JobRunner.h"
#include "operations/OperationCatalog.h"
#include "operations/UndoStore.h"
#include "platform/CanberraSounds.h"
#include "ring/RingController.h"
#include "triggers/DragMonitor.h"
#include "triggers/HotKeyCenter.h"
#include "triggers/TriggerBackend.h"

#include <QObject>

namespace wendrel {

// The tray agent's wiring: the catalog and job runner, the ring, pausing, the tray menu,
// requests from other wendrel processes, and the announcements of finished jobs. It holds
// no processing of its own.
class Coordinator : public QObject {
    Q_OBJECT

public:
    explicit Coordinator(QObject* parent = nullptr);

    // Takes the agent's place in the session; false when another agent already has it.
    bool start();

    // Opens a ring for files at the pointer (the command line, file-manager actions).
    void openRing(RingKind kind, const QStringList& files, bool clickMode,
                  std::chrono::steady_clock::time_point requestedAt = std::chrono::steady_clock::now());

    // "Choose Files…": the convert ring, in click mode, at the centre of the screen.
    void chooseFiles();

    void undoLastResult();

    // A ring for the file manager's selection: a double tap (only while a file manager is the
    // active window) or a shortcut (from anywhere).
    void openFromFileManagerSelection(RingKind kind, bool fileManagerMustBeActive);

    RingController& ring() { return m_ring; }
    TrayMenu& tray() { return m_tray; }
    PauseManager& pause() { return m_pause; }

private:
    void handle(const AgentRequest& request);
    void startTriggers();
    void explainSelectionFailure();

    OperationCatalog m_catalog;
    UndoStore m_undo;
    FolderAccessStore m_folders;
    JobRunner m_runner{&m_undo};
    RingController m_ring{m_catalog, m_runner};
    PauseManager m_pause;
    TrayMenu m_tray{m_pause, m_undo};
    AgentChannel m_channel;
    JobEventBus m_bus;
    CanberraSounds m_sounds;
    std::unique_ptr<TriggerBackend> m_triggers;
    std::unique_ptr<DragMonitor> m_dragMonitor;
    std::unique_ptr<HotKeyCenter> m_hotKeys;
    bool m_selectionFailureExplained = false;
};

}  // namespace wendrel
