#pragma once

#include <QString>

#include <sys/types.h>

#include <optional>

namespace wendrel {

// Where an agent started from the command line writes its log: $XDG_STATE_HOME/wendrel/agent.log
// (~/.local/state/wendrel/agent.log by default).
QString agentLogPath();

// Starts `program` without arguments as a tray agent that outlives the caller: a session of its
// own (no controlling terminal, so closing the caller's terminal doesn't end it), standard input
// from /dev/null, standard output and error into `logPath`, started afresh. The caller's
// terminal or pipe never receives its log lines and never waits for it to close.
// Returns the agent's process id, or none when it could not be started.
std::optional<pid_t> startDetachedAgent(const QString& program, const QString& logPath);

}  // namespace wendrel
