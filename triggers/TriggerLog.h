#pragma once

#include <QLoggingCategory>

// "wendrel.triggers": what the triggers saw (a new drag and its files, modifier keys going down
// and up, a shortcut) at debug level, so a session that misbehaves can be replayed from its log.
Q_DECLARE_LOGGING_CATEGORY(lcTriggers)
