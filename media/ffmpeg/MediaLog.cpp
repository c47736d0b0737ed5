#include "MediaLog.h"

Q_LOGGING_CATEGORY(lcMedia, "wendrel.media", QtInfoMsg)
