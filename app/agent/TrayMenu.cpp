#include "TrayMenu.h"

#include "DesktopIntegration.h"
#include "app/shell/PauseManager.h"
#include "operations/UndoStore.h"

#include <QCoreApplication>

namespace wendrel {

TrayMenu::TrayMenu(PauseManager& pause, UndoStore& undo, QObject* parent)
    : QObject(parent), m_pause(pause), m_undo(undo)
{
    m_icon.setToolTip(QStringLiteral("Wendrel"));
    m_icon.setContextMenu(&m_menu);
    connect(&m_menu, &QMenu::aboutToShow, this, &TrayMenu::rebuild);
    connect(&m_pause, &PauseManager::changed, this, &TrayMenu::updateIcon);
    connect(&m_icon, &QSystemTrayIcon::activated, this, [this](QSystemTrayIcon::ActivationReason reason) {
        if (reason == QSystemTrayIcon::Trigger)
            m_menu.popup(QCursor::pos());
    });
    updateIcon();
    rebuild();
}

bool TrayMenu::showIcon()
{
    if (!QSystemTrayIcon::isSystemTrayAvailable())
        return false;
    m_icon.show();
    return true;
}

void TrayMenu::updateIcon()
{
    m_icon.setIcon(QIcon(m_pause.isPaused() ? QStringLiteral(":/wendrel/app/tray-paused.svg")
                                            : QStringLiteral(":/wendrel/app/tray.svg")));
    m_icon.setToolTip(m_pause.statusText().value_or(QStringLiteral("Wendrel")));
}

void TrayMenu::addPauseEntries(QMenu& into, const QString& title)
{
    QMenu* durations = into.addMenu(title);
    for (PauseManager::Duration duration : PauseManager::allDurations) {
        durations->addAction(PauseManager::title(duration), this, [this, duration] { m_pause.pause(duration); });
    }
}

void TrayMenu::rebuild()
{
    m_menu.clear();
    m_menu.addAction(tr("Choose Files…"), this, &TrayMenu::chooseFilesRequested);
    QAction* undo = m_menu.addAction(tr("Undo Last Result"), this, &TrayMenu::undoRequested);
    undo->setEnabled(!m_undo.lastResults().isEmpty());
    m_menu.addSeparator();

    if (const std::optional<QString> status = m_pause.statusText()) {
        m_menu.addAction(*status)->setEnabled(false);
        m_menu.addAction(tr("Resume Wendrel"), this, [this] { m_pause.resume(); });
        addPauseEntries(m_menu, tr("Pause Longer"));
    } else {
        addPauseEntries(m_menu, tr("Pause Wendrel"));
    }
    m_menu.addSeparator();

    QAction* atLogin = m_menu.addAction(tr("Start at Login"));
    atLogin->setCheckable(true);
    atLogin->setChecked(DesktopIntegration::startsAtLogin());
    connect(atLogin, &QAction::toggled, this, &TrayMenu::startAtLoginToggled);
    m_menu.addSeparator();
    m_menu.addAction(tr("Quit Wendrel"), this, &TrayMenu::quitRequested);
}

}  // namespace wendrel
