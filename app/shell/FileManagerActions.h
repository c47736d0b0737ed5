#pragma once

#include "operations/RingKind.h"

#include <QByteArray>
#include <QList>
#include <QString>
#include <QStringList>

#include <array>
#include <optional>

namespace wendrel {

// The file managers Wendrel adds "Convert with Wendrel", "Wendrel Tools" and "Wendrel Actions"
// to. Each action runs `wendrel ring KIND FILE...` for the selection.
enum class FileManager { nautilus, caja, nemo, dolphin, thunar };

inline constexpr std::array<FileManager, 5> allFileManagers{
    FileManager::nautilus, FileManager::caja, FileManager::nemo, FileManager::dolphin, FileManager::thunar};

// "Nautilus", "Caja", …: how the file manager calls itself.
QString fileManagerName(FileManager manager);

// The menu label of the action that opens a ring: "Convert with Wendrel", "Wendrel Tools", "Wendrel Actions".
QString contextMenuLabel(RingKind ring);

// The user's own XDG folders, where every file manager looks for per-user actions.
struct IntegrationHomes {
    QString dataHome;          // $XDG_DATA_HOME, ~/.local/share by default
    QString configHome;        // $XDG_CONFIG_HOME, ~/.config by default
    QStringList configDirs;    // $XDG_CONFIG_DIRS, where Thunar's default uca.xml lives

    // The current user's, from the environment.
    static IntegrationHomes current();
};

// A file that belongs to Wendrel as a whole: it is written, replaced and deleted only while it
// carries Wendrel's marker.
struct OwnFile {
    QString path;
    QByteArray content;
    bool executable = false;
};

// The files Wendrel owns for a file manager, each calling `executable`. Thunar has none: its
// actions live in the user's uca.xml (see thunarActionsPath).
QList<OwnFile> ownFiles(FileManager manager, const IntegrationHomes& homes, const QString& executable);

// Contents, one function per format.
QByteArray selectionScript(FileManager manager, RingKind ring, const QString& executable);  // Nautilus, Caja
QByteArray nemoAction(RingKind ring, const QString& executable);
QByteArray dolphinServiceMenu(const QString& executable);

// True for a file that Wendrel wrote, whatever executable it calls; false for anything else,
// such as a user's own script that happens to have the same name.
bool isWendrelFile(const QByteArray& content);

// The folders an install created for a file, as recorded in it, so that removing the file can
// take them away again without touching folders that were there before.
QStringList foldersCreatedFor(const QByteArray& content);
QByteArray withFoldersCreated(const QByteArray& ownFileContent, const QStringList& folders);

// Thunar keeps every custom action, the user's and Wendrel's, in one uca.xml.
QString thunarActionsPath(const IntegrationHomes& homes);

// uca.xml with Wendrel's three actions (replacing any earlier ones of Wendrel's) added before the
// end of the list; every other byte stays as it was. None when `existing` isn't a readable
// custom-actions file: it is then left alone.
std::optional<QByteArray> thunarActionsWithWendrel(const QByteArray& existing, const QString& executable);

// uca.xml without Wendrel's actions and without the note that Wendrel created the file. For a
// file that went through thunarActionsWithWendrel alone, this gives back the bytes it started from.
std::optional<QByteArray> thunarActionsWithoutWendrel(const QByteArray& existing);

// A new uca.xml, made when the user has none: Thunar reads only the first uca.xml it finds, so
// the system's default actions (`systemDefault`, empty when there are none) are copied in to
// stay visible. It carries a note that Wendrel created it, with the folders created for it.
QByteArray newThunarActionsFile(const QByteArray& systemDefault, const QStringList& foldersCreated);

// True when Wendrel created this uca.xml and nothing but Wendrel's actions were added to it
// since: removing Wendrel's actions may then delete the file.
bool isUnchangedThunarFileOfWendrel(const QByteArray& existing, const QByteArray& systemDefault);

}  // namespace wendrel
