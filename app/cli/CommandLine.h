#pragma once

#include <QStringList>

namespace wendrel {

// Exit statuses of the command line, for scripts.
enum ExitStatus : int {
    exitSuccess = 0,
    exitJobFailed = 1,    // the job, or some of its files, failed; the reason is on stderr
    exitUsage = 2,        // the command line itself was wrong
    exitCancelled = 130,  // interrupted with Ctrl+C, or the prompt declined; nothing was placed
};

class OperationCatalog;

// `wendrel COMMAND ...` with every entry of `catalog`: lists the entries that fit files, or
// runs one. Needs a QCoreApplication (a QGuiApplication for entries that draw text); returns
// the process's exit status.
int runCommandLine(const QStringList& arguments, const OperationCatalog& catalog);

// Whether the arguments run an entry that `catalog` already holds, so the command needs no other
// layer's entries. Any other command (listing, help, an unknown entry) needs them all.
bool runsEntryOf(const QStringList& arguments, const OperationCatalog& catalog);

// Whether the arguments may run an entry that draws text, so the process must start Qt's GUI
// layer. Errs towards yes: a file named like such an entry costs a few milliseconds.
bool mayRunTextDrawingEntry(const QStringList& arguments, const OperationCatalog& catalog);

}  // namespace wendrel
