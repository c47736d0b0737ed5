#pragma once

#include "SubtitleCue.h"

#include <QString>

namespace wendrel::SubtitleOperations {

enum class SubtitleFormat { srt, vtt, txt };

// "HH:MM:SS,mmm" (SRT) or "HH:MM:SS.mmm" (VTT), rounded to the nearest millisecond with halves
// away from zero; hours grow past two digits as needed. Throws OperationError for a time that
// is negative or too large to count in milliseconds.
QString formatSubtitleTime(double seconds, QChar separator);

// The whole file in the chosen format:
// SRT numbers its cues from 1; VTT starts with "WEBVTT" and has no numbers; plain text is the
// cues' text, one cue after another, ending in a newline.
QString writeSubtitles(const QList<Cue>& cues, SubtitleFormat format);

}  // namespace wendrel::SubtitleOperations
