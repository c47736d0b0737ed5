#include "Logging.h"

Q_LOGGING_CATEGORY(lcRing, "wendrel.ring", QtInfoMsg)
Q_LOGGING_CATEGORY(lcJobs, "wendrel.jobs", QtInfoMsg)
