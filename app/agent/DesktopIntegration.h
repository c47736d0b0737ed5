#pragma once

#include <QString>

namespace wendrel {

// Where the desktop finds Wendrel: its entry in the applications menu (with its icon) and the
// autostart entry that starts it at login. Both live in the user's own XDG folders and point
// at this executable.
namespace DesktopIntegration {

// Writes the applications-menu entry and icon when they are missing or out of date.
void installApplicationEntry(const QString& executable);

bool startsAtLogin();
void setStartsAtLogin(bool enabled, const QString& executable);

// On the first start only, turns start-at-login on: later the user's choice stands.
void applyFirstRunDefaults(const QString& executable);

QString autostartEntryPath();
QString applicationEntryPath();

}  // namespace DesktopIntegration
}  // namespace wendrel
