#include "TriggerLog.h"

Q_LOGGING_CATEGORY(lcTriggers, "wendrel.triggers", QtInfoMsg)
