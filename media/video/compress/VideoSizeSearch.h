#pragma once

#include <QtGlobal>

#include <cstdint>
#include <vector>

namespace wendrel::media {

// A file size asked of one video, and what the search knows of the source before encoding.
struct SizeGoal {
    qint64 targetBytes = 0;
    double durationSeconds = 0;
    int displayWidth = 0;  // the picture as a player shows it, rotation applied
    int displayHeight = 0;
    double framesPerSecond = 0;  // 0: unknown
    bool hasAudio = true;
    bool hevc = false;
    int maxHeight = 0;  // the user's limit on the displayed height; 0: none
    int64_t sourceVideoBitsPerSecond = 0;  // the source picture's rate; 0: unknown
};

// One encode of the search: the displayed height it is limited to (0: the source's) and the
// average rates of its streams.
struct SizeAttempt {
    int maxHeight = 0;
    int64_t videoBitsPerSecond = 0;
    int audioBitsPerSecond = 0;

    friend bool operator==(const SizeAttempt&, const SizeAttempt&) = default;
};

struct AttemptOutcome {
    SizeAttempt attempt;
    qint64 bytes = 0;       // the whole file
    qint64 videoBytes = 0;  // the picture's packets as measured in the file; 0: estimated
};

// What to do after the attempts so far: encode another, keep one of them, or give up.
struct SizeStep {
    enum class Kind { encode, keep, impossible };
    Kind kind = Kind::impossible;
    SizeAttempt next{};      // encode
    std::size_t chosen = 0;  // keep: the index of the attempt that stays

    friend bool operator==(const SizeStep&, const SizeStep&) = default;
};

// Attempts a search makes at most. Two are the rule; the rest catch an encoder that misjudged
// its rate twice.
inline constexpr int maxSizeAttempts = 4;

// The search for an encode that fits `goal.targetBytes` and comes within 3 % of it, from the
// outcomes of the attempts so far (empty: the first). Each rate aims 1.5 % under the target,
// after the audio and the container's index are paid for; the next rate scales the last by
// how far its picture's share missed (measured when the outcome says, else estimated: a
// copied soundtrack or a fuller index than expected then doesn't mislead it). A rate too low for a picture's size (below
// lowestBitsPerPixel) makes it smaller, down the usual heights to 240 lines, before the search
// gives up. No rate goes above what the source's own picture spends: a calm or already small
// video isn't made larger, and it keeps its height, which that rate already serves. The
// search keeps the first attempt that lands in the window, else the largest one that fits
// when the attempts run out or a better one can't be had: a picture that fitted far under
// is tried once more at a higher rate, not chased further, since an encoder given more bits
// than the content needs doesn't spend them.
SizeStep nextSizeStep(const SizeGoal& goal, const std::vector<AttemptOutcome>& attempts);

// The parts of the rule, for testing and logging.

// The displayed height an attempt limited to `maxHeight` has (0: the source's).
int attemptHeight(const SizeGoal& goal, int maxHeight);

// The sound's rate for a file of `totalBitsPerSecond`: 128 kbit/s, or less for small files,
// so the sound takes no more than a tenth of the file, never under 32 kbit/s.
int audioRateForTotal(double totalBitsPerSecond);

// The bytes an MP4 or MOV file spends besides its streams' data: headers and the index of
// every frame.
qint64 containerOverheadBytes(double durationSeconds, double framesPerSecond, bool hasAudio);

// The rates below which a picture of this size falls apart into blocks, and above which more
// bits no longer show: bits per pixel and frame of 0.03 and 0.25 for H.264, two thirds of
// that for HEVC, which needs fewer for the same look. The highest is never above the source's.
int64_t lowestVideoRate(const SizeGoal& goal, int height);
int64_t highestVideoRate(const SizeGoal& goal, int height);

}  // namespace wendrel::media
