#pragma once

#include <QMenu>
#include <QObject>
#include <QSystemTrayIcon>

namespace wendrel {

class PauseManager;
class UndoStore;

// The tray icon and its menu: Choose Files…, Undo Last Result, pausing, start at login and
// Quit. The icon and the pause entries follow the pause state; the menu is rebuilt each
// time it opens, so it always tells the truth.
class TrayMenu : public QObject {
    Q_OBJECT

public:
    TrayMenu(PauseManager& pause, UndoStore& undo, QObject* parent = nullptr);

    // Shows the icon where the desktop has a tray; false when there is none.
    bool showIcon();

    // The menu as it is now (also for screenshots and tests).
    QMenu& menu() { return m_menu; }
    void rebuild();

Q_SIGNALS:
    void chooseFilesRequested();
    void undoRequested();
    void startAtLoginToggled(bool enabled);
    void quitRequested();

private:
    void updateIcon();
    void addPauseEntries(QMenu& into, const QString& title);

    PauseManager& m_pause;
    UndoStore& m_undo;
    QSystemTrayIcon m_icon;
    QMenu m_menu;
};

}  // namespace wendrel
