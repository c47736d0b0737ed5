#include "Coordinator.h"

#include "DesktopIntegration.h"
#include "app/AllOperations.h"
#include "app/dialogs/PromptDialog.h"
#include "app/shell/FileManagerIntegration.h"
#include "operations/Logging.h"
#include "operations/settings/SettingsStore.h"
#include "triggers/RingKeyBindings.h"

#include <QApplication>
#include <QCursor>
#include <QFileDialog>
#include <QMessageBox>
#include <QPushButton>
#include <QScreen>

namespace wendrel {

Coordinator::Coordinator(QObject* parent) : QObject(parent)
{
    registerAllOperations(m_catalog);
    m_ring.model().setFeedback(
        {&m_sounds, [] { return SettingsStore::value(QStringLiteral("feedbackEnabled"), true).toBool(); }});
    m_ring.model().askUser = [this](const PromptRequest& request) { return askUser(request, &m_ring.view()); };
    connect(&m_ring.model(), &RingModel::jobFinished, &m_bus, &JobEventBus::publish);
    connect(&m_channel, &AgentChannel::requestReceived, this, &Coordinator::handle);
    connect(&m_tray, &TrayMenu::chooseFilesRequested, this, &Coordinator::chooseFiles);
    connect(&m_tray, &TrayMenu::undoRequested, this, &Coordinator::undoLastResult);
    connect(&m_tray, &TrayMenu::quitRequested, qApp, &QCoreApplication::quit);
    connect(&m_tray, &TrayMenu::startAtLoginToggled, this, [](bool enabled) {
        DesktopIntegration::setStartsAtLogin(enabled, QCoreApplication::applicationFilePath());
    });
}

bool Coordinator::start()
{
    if (!m_channel.listen())
        return false;
    m_folders.load();
    m_pause.load();
    const QString executable = QCoreApplication::applicationFilePath();
    DesktopIntegration::installApplicationEntry(executable);
    DesktopIntegration::applyFirstRunDefaults(executable);
    QStringList symbols;
    for (RingKind kind : allRingKinds) {
        for (const FileOperationPtr& entry : m_catalog.entries(kind))
            symbols.append(entry->symbol());
    }
    m_ring.warmUp(symbols);
    startTriggers();
    if (!m_tray.showIcon())
        qCInfo(lcRing, "no system tray on this desktop: the ring opens from the command line and file manager");
    return true;
}

void Coordinator::startTriggers()
{
    m_triggers = TriggerBackend::create(this);
    if (!m_triggers) {
        qCInfo(lcRing, "not an X11 session: drags and double taps can't be watched here; the ring opens from "
                       "the file manager's actions and the command line");
        return;
    }
    TriggerBackend* triggers = m_triggers.get();
    m_dragMonitor = std::make_unique<DragMonitor>(triggers->selectionChanges(), [triggers] { return triggers->readDragFiles(); });
    m_dragMonitor->onRingRequested = [this](RingKind kind, const QStringList& files, QPoint pointer) {
        if (m_pause.isPaused())
            return;
        const bool wasShown = m_ring.isShown();
        m_ring.show(kind, files, false, pointer);
        // The drag source only looks for a new target when the pointer moves.
        if (!wasShown)
            m_triggers->nudgePointer();
    };
    m_dragMonitor->onDragEnded = [this] { m_ring.dragEnded(); };
    m_dragMonitor->onDoubleTap = [this](RingKind kind) {
        if (RingKeyBindings::isDoubleTapEnabled(kind) && !m_pause.isPaused())
            openFromFileManagerSelection(kind, true);
    };
    triggers->start(*m_dragMonitor);

    m_hotKeys = std::make_unique<HotKeyCenter>(triggers->hotKeyGrabber());
    m_hotKeys->onTrigger = [this](RingKind kind) { openFromFileManagerSelection(kind, false); };
    connect(triggers, &TriggerBackend::hotKeyPressed, m_hotKeys.get(), &HotKeyCenter::triggered);
    m_hotKeys->load();
    m_hotKeys->setSuspended(m_pause.isPaused());
    m_hotKeys->registerAll();
    // While paused the shortcuts are released, so the same keys reach other programs.
    connect(&m_pause, &PauseManager::changed, m_hotKeys.get(), [this] { m_hotKeys->setSuspended(m_pause.isPaused()); });
}

void Coordinator::openFromFileManagerSelection(RingKind kind, bool fileManagerMustBeActive)
{
    if (m_ring.isShown() && m_ring.model().isClickMode()) {
        m_ring.show(kind, m_ring.model().urls(), true, QCursor::pos());
        return;
    }
    if (!m_triggers || (fileManagerMustBeActive && !m_triggers->isFileManagerActive()))
        return;
    m_triggers->fetchFileManagerSelection([this, kind](const SelectionResult& result) {
        if (const auto* error = std::get_if<QString>(&result)) {
            qCWarning(lcRing, "Finder selection failed: %s", qUtf8Printable(*error));
            QApplication::beep();
            explainSelectionFailure();
            return;
        }
        const QStringList& files = std::get<QStringList>(result);
        if (files.isEmpty()) {
            QApplication::beep();
            return;
        }
        openRing(kind, files, true);
    });
}

// Some file managers (those running natively on Wayland, or ones that ignore a synthetic Ctrl+C)
// never hand their selection over. Once per session, say so and offer the way that always
// works: their context menus.
void Coordinator::explainSelectionFailure()
{
    if (m_selectionFailureExplained)
        return;
    m_selectionFailureExplained = true;
    QMessageBox notice(QMessageBox::Information, QStringLiteral("Wendrel"),
                       tr("Wendrel couldn't read the file manager's selection"));
    notice.setInformativeText(tr("Your file manager didn't hand its selected files over. Its context menu can open "
                                 "the rings instead: “Convert with Wendrel”, “Wendrel Tools” and “Wendrel Actions”."));
    QPushButton* add = notice.addButton(tr("Add to File Managers"), QMessageBox::AcceptRole);
    notice.addButton(QMessageBox::Close);
    notice.setDefaultButton(add);
    notice.exec();
    if (notice.clickedButton() == add)
        installFileManagerActions(IntegrationHomes::current(), QCoreApplication::applicationFilePath());
}

void Coordinator::handle(const AgentRequest& request)
{
    switch (request.command) {
    case AgentRequest::Command::ring:
        openRing(request.ring, request.files, true, request.receivedAt);
        return;
    case AgentRequest::Command::activate:
        chooseFiles();
        return;
    }
}

void Coordinator::openRing(RingKind kind, const QStringList& files, bool clickMode,
                           std::chrono::steady_clock::time_point requestedAt)
{
    qCInfo(lcRing, "open %s for %ld selected file(s)", qUtf8Printable(rawValue(kind)), long(files.size()));
    m_ring.show(kind, files, clickMode, QCursor::pos(), requestedAt);
}

void Coordinator::chooseFiles()
{
    QFileDialog dialog(nullptr, QCoreApplication::translate("Coordinator", "Choose Files"));
    dialog.setFileMode(QFileDialog::ExistingFiles);
    dialog.setLabelText(QFileDialog::Accept, QCoreApplication::translate("Coordinator", "Open Ring"));
    dialog.setDirectory(QDir::homePath());
    if (dialog.exec() != QDialog::Accepted || dialog.selectedFiles().isEmpty())
        return;
    QScreen* screen = QGuiApplication::primaryScreen();
    const QPoint centre = screen ? screen->availableGeometry().center() : QPoint(0, 0);
    m_ring.show(RingKind::convert, dialog.selectedFiles(), true, centre);
}

void Coordinator::undoLastResult()
{
    if (const std::optional<QString> error = m_undo.undo())
        QMessageBox::warning(nullptr, QStringLiteral("Wendrel"), *error);
}

}  // namespace wendrel
