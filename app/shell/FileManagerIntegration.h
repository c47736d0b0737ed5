#pragma once

#include "FileManagerActions.h"
#include "ThunarActions.h"

#include <QList>
#include <QString>

namespace wendrel {

// What happened to one file.
enum class FileOutcome {
    written,    // created, or brought up to date
    unchanged,  // already as it should be
    removed,    // Wendrel's file, or Wendrel's part of a shared file, taken away
    absent,     // nothing of Wendrel's was there
    leftAlone,  // a file of the user's sits where Wendrel's would go; it was not touched
    failed,     // couldn't be read or written: `error` says why
};

// "written", "unchanged", …: the spelling in JSON reports.
QString rawValue(FileOutcome outcome);

struct FileReport {
    QString path;
    FileOutcome outcome = FileOutcome::absent;
    QString error;
};

struct FileManagerReport {
    FileManager manager = FileManager::nautilus;
    QList<FileReport> files;
};

// Adds the context-menu actions, calling `executable`, for every file manager, in the order of
// allFileManagers. Running it again changes nothing; a user's file where Wendrel's would go is
// never touched. Folders are created as needed and noted in the files, for the removal.
QList<FileManagerReport> installFileManagerActions(const IntegrationHomes& homes, const QString& executable);

// Takes away what installFileManagerActions added, and the folders it created once they are
// empty, and nothing else: the user's actions in a shared uca.xml and their own files stay.
QList<FileManagerReport> removeFileManagerActions(const IntegrationHomes& homes);

}  // namespace wendrel
