#pragma once

#include "FileManagerActions.h"

#include <QByteArray>
#include <QString>
#include <QStringList>

#include <optional>

namespace wendrel {

// Thunar keeps every custom action, the user's and Wendrel's, in one uca.xml. Wendrel's are
// recognised by their unique-id; everything else in the file is kept byte for byte.
QString thunarActionsPath(const IntegrationHomes& homes);

// uca.xml with Wendrel's three actions (replacing any earlier ones of Wendrel's) added before the
// end of the list. None when `existing` isn't a readable custom-actions file: it is then left alone.
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
