#include "Coordinator.h"

#include "DesktopIntegration.h"
#include "app/AllOperations.h"
#include "operations/Logging.h"

#include <QApplication>
#include <QCursor>
#include <QFileDialog>
#include <QMessageBox>
#include <QScreen>

namespace wendrel {

Coordinator::Coordinator(QObject* parent) : QObject(parent)
{
    registerAllOperations(m_catalog);
    m_ring.model().setFeedbackSounds(&m_sounds);
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
    if (!m_tray.showIcon())
        qCInfo(lcRing, "no system tray on this desktop: the ring opens from the command line and file manager");
    return true;
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
