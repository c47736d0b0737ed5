#include "VideoSizeSearch.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <optional>

namespace wendrel::media {

namespace {

// Where each rate aims, and how far under the target a result may land and still be kept
// at once: aiming at the middle of the window lets an encoder miss by 1.5 % either way.
constexpr double aimShare = 0.985;
constexpr double windowShare = 0.97;

// The heights a picture steps down through when its rate is too low for its size.
constexpr std::array smallerHeights{2160, 1440, 1080, 720, 540, 480, 360, 240};

double framesPerSecond(const SizeGoal& goal)
{
    // Unknown rates are taken as the usual 30; above 60 the extra frames cost little.
    return goal.framesPerSecond > 0 ? std::clamp(goal.framesPerSecond, 1.0, 60.0) : 30.0;
}

double pixelsPerSecond(const SizeGoal& goal, int height)
{
    if (goal.displayHeight <= 0)
        return 0;
    const double width = double(goal.displayWidth) * height / goal.displayHeight;
    return width * height * framesPerSecond(goal);
}

// The next smaller height of the steps, or nothing below 240 lines.
std::optional<int> smallerHeight(int height)
{
    for (int candidate : smallerHeights) {
        if (candidate < height)
            return candidate;
    }
    return std::nullopt;
}

bool fits(const SizeGoal& goal, const AttemptOutcome& outcome) { return outcome.bytes <= goal.targetBytes; }

bool inWindow(const SizeGoal& goal, const AttemptOutcome& outcome)
{
    return fits(goal, outcome) && double(outcome.bytes) >= windowShare * double(goal.targetBytes);
}

// The bytes a file spends besides its picture.
double fixedBytes(const SizeGoal& goal, int audioBitsPerSecond)
{
    return double(containerOverheadBytes(goal.durationSeconds, framesPerSecond(goal), goal.hasAudio))
           + double(audioBitsPerSecond) * goal.durationSeconds / 8;
}

// The rate at `limit`, or at the first smaller height whose lowest rate it reaches; nothing
// when even the smallest is starved. A rate the source's own picture doesn't reach keeps the
// height: the source shows what that rate looks like at that size.
std::optional<SizeAttempt> placed(const SizeGoal& goal, int limit, double videoBitsPerSecond, int audioBitsPerSecond)
{
    int height = attemptHeight(goal, limit);
    const bool sourceRateSuffices =
        goal.sourceVideoBitsPerSecond > 0 && videoBitsPerSecond >= double(goal.sourceVideoBitsPerSecond);
    while (!sourceRateSuffices && videoBitsPerSecond < double(lowestVideoRate(goal, height))) {
        const std::optional<int> smaller = smallerHeight(height);
        if (!smaller)
            return std::nullopt;
        limit = height = *smaller;
    }
    const double rate = std::min(videoBitsPerSecond, double(highestVideoRate(goal, height)));
    return SizeAttempt{limit, int64_t(std::llround(rate)), audioBitsPerSecond};
}

SizeStep encode(const SizeAttempt& attempt) { return {SizeStep::Kind::encode, attempt}; }
SizeStep keep(std::size_t index) { return {.kind = SizeStep::Kind::keep, .chosen = index}; }
SizeStep impossible() { return {}; }

SizeStep firstStep(const SizeGoal& goal)
{
    if (goal.targetBytes <= 0 || goal.durationSeconds <= 0 || goal.displayHeight <= 0)
        return impossible();
    const double totalBitsPerSecond = double(goal.targetBytes) * 8 / goal.durationSeconds;
    const int audio = goal.hasAudio ? audioRateForTotal(totalBitsPerSecond) : 0;
    const double videoBytes = aimShare * double(goal.targetBytes) - fixedBytes(goal, audio);
    const int limit = goal.maxHeight > 0 && goal.maxHeight < goal.displayHeight ? goal.maxHeight : 0;
    const std::optional<SizeAttempt> attempt = placed(goal, limit, videoBytes * 8 / goal.durationSeconds, audio);
    return attempt ? encode(*attempt) : impossible();
}

}  // namespace

int attemptHeight(const SizeGoal& goal, int maxHeight)
{
    return maxHeight > 0 ? std::min(maxHeight, goal.displayHeight) : goal.displayHeight;
}

int audioRateForTotal(double totalBitsPerSecond)
{
    for (int rate : {128'000, 96'000, 64'000, 48'000}) {
        if (rate <= totalBitsPerSecond / 10)
            return rate;
    }
    return 32'000;
}

qint64 containerOverheadBytes(double durationSeconds, double framesPerSecond, bool hasAudio)
{
    // About 12 bytes of index for each picture (its size and timing), 4 for each of the about
    // 47 AAC frames a second, and a few kilobytes of headers and the encoder's own notes.
    const double perSecond = framesPerSecond * 12 + (hasAudio ? 47 * 4 : 0);
    return 8'000 + qint64(std::ceil(durationSeconds * perSecond));
}

int64_t lowestVideoRate(const SizeGoal& goal, int height)
{
    return int64_t(std::llround(pixelsPerSecond(goal, height) * (goal.hevc ? 0.02 : 0.03)));
}

int64_t highestVideoRate(const SizeGoal& goal, int height)
{
    const auto highest = int64_t(std::llround(pixelsPerSecond(goal, height) * (goal.hevc ? 0.25 * 2 / 3 : 0.25)));
    return goal.sourceVideoBitsPerSecond > 0 ? std::min(highest, goal.sourceVideoBitsPerSecond) : highest;
}

SizeStep nextSizeStep(const SizeGoal& goal, const std::vector<AttemptOutcome>& attempts)
{
    if (attempts.empty())
        return firstStep(goal);

    const std::size_t lastIndex = attempts.size() - 1;
    const AttemptOutcome& last = attempts.back();
    const SizeAttempt& tried = last.attempt;
    const int height = attemptHeight(goal, tried.maxHeight);
    if (inWindow(goal, last))
        return keep(lastIndex);
    // A picture already at the rate where more bits no longer show is as good as it gets.
    if (fits(goal, last) && tried.videoBitsPerSecond >= highestVideoRate(goal, height))
        return keep(lastIndex);

    std::optional<std::size_t> largestFit;
    for (std::size_t i = 0; i < attempts.size(); ++i) {
        if (fits(goal, attempts[i]) && (!largestFit || attempts[i].bytes > attempts[*largestFit].bytes))
            largestFit = i;
    }
    const SizeStep settle = largestFit ? keep(*largestFit) : impossible();
    if (attempts.size() >= std::size_t(maxSizeAttempts))
        return settle;

    // Scale the picture's share of the last file to the share the aim leaves it.
    const double fixed = last.videoBytes > 0 ? double(last.bytes - last.videoBytes)
                                             : fixedBytes(goal, tried.audioBitsPerSecond);
    const double aimedVideo = aimShare * double(goal.targetBytes) - fixed;
    const double actualVideo = double(last.bytes) - fixed;
    if (aimedVideo <= 0)
        return settle;
    double next = actualVideo > 0 ? double(tried.videoBitsPerSecond) * aimedVideo / actualVideo
                                  : double(tried.videoBitsPerSecond) * aimShare * double(goal.targetBytes) / double(last.bytes);

    // Stay between the fastest rate that fitted and the slowest that didn't at this height,
    // halving the gap when the estimate leaves it: an encoder that isn't proportional still
    // converges.
    std::optional<double> fastestFit;
    std::optional<double> slowestOver;
    for (const AttemptOutcome& outcome : attempts) {
        if (outcome.attempt.maxHeight != tried.maxHeight)
            continue;
        const double rate = double(outcome.attempt.videoBitsPerSecond);
        if (fits(goal, outcome))
            fastestFit = std::max(fastestFit.value_or(rate), rate);
        else
            slowestOver = std::min(slowestOver.value_or(rate), rate);
    }
    if (fastestFit && slowestOver && (next <= *fastestFit || next >= *slowestOver))
        next = (*fastestFit + *slowestOver) / 2;
    // A rate within 1 % of one that fitted gains nothing worth another encode; and a second
    // fit far under the target says the content takes no more bits.
    if (fastestFit && next <= *fastestFit * 1.01)
        return settle;
    const auto fitsHere = [&](const AttemptOutcome& outcome) {
        return outcome.attempt.maxHeight == tried.maxHeight && fits(goal, outcome);
    };
    if (fits(goal, last) && std::count_if(attempts.begin(), attempts.end(), fitsHere) > 1)
        return settle;

    const std::optional<SizeAttempt> attempt = placed(goal, tried.maxHeight, next, tried.audioBitsPerSecond);
    if (!attempt || *attempt == tried)
        return settle;
    return encode(*attempt);
}

}  // namespace wendrel::media
