#pragma once

#include "operations/RingKind.h"

#include <QByteArray>
#include <QList>
#include <QString>
#include <QStringList>

#include <array>

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

// Its tooltip, where the format has one.
QString contextMenuDescription(RingKind ring);

// Every file Wendrel writes for a file manager says so in a comment that starts with this.
inline constexpr char integrationMarker[] = "wendrel-integrate:";

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
// actions live in the user's uca.xml (see ThunarActions.h).
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

// The record foldersCreatedFor reads, for a comment of any format: no line breaks, no "--".
QString createdFoldersNote(const QStringList& folders);

// POSIX sh quoting: the text arrives as one word, whatever it holds.
QString shellQuoted(QString text);

}  // namespace wendrel
