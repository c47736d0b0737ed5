#pragma once

#include <QLoggingCategory>

// "wendrel.media": what the audio and video code decided (stream copy or re-encode, attempts
// at a target size) and what the FFmpeg libraries reported.
Q_DECLARE_LOGGING_CATEGORY(lcMedia)
