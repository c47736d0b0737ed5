#pragma once

#include "SubtitleCue.h"

#include <QStringView>

#include <optional>

namespace wendrel::SubtitleOperations {

// Reads SubRip and WebVTT alike. Blocks are separated by an exactly empty line; a block counts
// when one of its lines holds "-->" with a valid time on each side, and its text is every
// line after that one. Headers, notes, cue numbers and identifiers fall away, and WebVTT cue
// settings after the end time ("align:start") are dropped. Windows line ends and byte-order
// marks are ignored.
QList<Cue> parseSubtitles(QStringView text);

// "01:02:03,500" or "02:03.5": two or three pieces separated by ':', each a plain decimal
// number, comma or dot before the fraction. A bare number of seconds is not a time.
std::optional<double> parseSubtitleTime(QStringView text);

}  // namespace wendrel::SubtitleOperations
