#pragma once

#include <QLoggingCategory>

// One line per event: "wendrel.ring" for what the ring shows and receives, "wendrel.jobs" for
// jobs and where their results went.
Q_DECLARE_LOGGING_CATEGORY(lcRing)
Q_DECLARE_LOGGING_CATEGORY(lcJobs)
