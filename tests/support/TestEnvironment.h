#pragma once

#include <QByteArray>
#include <QString>
#include <QStringList>

#include <ostream>

// Failed expectations show strings as text rather than as arrays of UTF-16 units.
inline void PrintTo(const QString& text, std::ostream* out) { *out << '"' << text.toStdString() << '"'; }

namespace wendrel::test {

// Every test process runs in a private world: HOME, the XDG config, data, cache and state homes and TMPDIR
// point into one fresh folder, so settings, Downloads, the Trash and scratch folders of the
// tests never touch the user's own and never see another test run's.
void isolateEnvironment();

// The private root that isolateEnvironment() made.
QString privateRoot();

// The folder jobs make their scratch folders in (TMPDIR).
QString scratchParent();

// Names of the job scratch folders ("Wendrel-…") that exist right now.
QStringList leftoverScratchFolders();

void writeFile(const QString& path, const QByteArray& bytes);
QByteArray readFile(const QString& path);

// Sorted names of the items in a folder, hidden ones included.
QStringList folderEntries(const QString& folder);

}  // namespace wendrel::test
