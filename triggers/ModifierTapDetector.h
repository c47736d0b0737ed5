#pragma once

#include "Modifiers.h"

#include <chrono>
#include <optional>

namespace wendrel {

using TriggerClock = std::chrono::steady_clock;

// Recognises a tap: modifier keys pressed and all released again within the time limit.
// Every key pressed between the first going down and the last coming up belongs to the tap,
// so Shift, then Ctrl, both released, is the combination Shift + Ctrl. Keys already held when
// the detector is armed never count until they have been released.
class ModifierTapDetector {
public:
    explicit ModifierTapDetector(std::chrono::milliseconds maxTapDuration = std::chrono::milliseconds(500))
        : m_maxTapDuration(maxTapDuration)
    {
    }

    // The combination of a tap that completed with these flags, if one did.
    std::optional<ModifierFlags> feed(ModifierFlags flags, TriggerClock::time_point now);

    // Starts afresh with `held` already down: no tap is being timed.
    void arm(ModifierFlags held);

private:
    std::chrono::milliseconds m_maxTapDuration;
    ModifierFlags m_previous = 0;
    std::optional<ModifierFlags> m_candidate;
    TriggerClock::time_point m_pressedAt{};
};

// Recognises two taps of the same combination in quick succession: at most 0.4 s from the
// release that completed the first to the release that completes the second. A pair is used
// up when recognised; a third tap starts a new one.
class DoubleTapDetector {
public:
    explicit DoubleTapDetector(std::chrono::milliseconds maxInterval = std::chrono::milliseconds(400))
        : m_maxInterval(maxInterval)
    {
    }

    std::optional<ModifierFlags> feed(ModifierFlags flags, TriggerClock::time_point now);

    // Forgets any half pair, with `held` already down: keys pressed during a drag never
    // become the first half of a double tap.
    void reset(ModifierFlags held);

private:
    std::chrono::milliseconds m_maxInterval;
    ModifierTapDetector m_taps;
    std::optional<ModifierFlags> m_lastKey;
    TriggerClock::time_point m_lastTime{};
};

}  // namespace wendrel
