#pragma once

#include <QByteArray>
#include <QStringList>

namespace wendrel {

// The local files named by a "text/uri-list" ("file:///home/me/a%20b.png" a line, CR LF or LF):
// comments, blank lines and anything that is not a local file are skipped.
QStringList localFilesFromUriList(const QByteArray& text);

// The local files of "x-special/gnome-copied-files": "copy" or "cut" on the first line, then
// the URIs. Text with no line break names no file.
QStringList localFilesFromGnomeCopiedFiles(const QByteArray& text);

}  // namespace wendrel
