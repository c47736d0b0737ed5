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

// `wendrel COMMAND ...`: lists the entries that fit files, or runs one. Needs a
// QCoreApplication; returns the process's exit status.
int runCommandLine(const QStringList& arguments);

}  // namespace wendrel
