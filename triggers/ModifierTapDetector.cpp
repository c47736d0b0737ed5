#include "ModifierTapDetector.h"

namespace wendrel {

std::optional<ModifierFlags> ModifierTapDetector::feed(ModifierFlags flags, TriggerClock::time_point now)
{
    const ModifierFlags current = flags & Modifier::mask;
    if (current == m_previous)
        return std::nullopt;
    if (current != 0 && m_previous == 0) {
        // The first key went down from none: a tap begins.
        m_previous = current;
        m_candidate = current;
        m_pressedAt = now;
        return std::nullopt;
    }
    if (!m_candidate) {
        m_previous = current;
        return std::nullopt;
    }
    if (current != 0) {
        // Keys changed and some are still held; the time limit still counts from the first.
        m_previous = current;
        *m_candidate |= current;
        return std::nullopt;
    }
    // All keys are up.
    const ModifierFlags combination = *m_candidate;
    m_candidate.reset();
    m_previous = 0;
    if (now - m_pressedAt <= m_maxTapDuration)
        return combination;
    return std::nullopt;
}

void ModifierTapDetector::arm(ModifierFlags held)
{
    m_previous = held & Modifier::mask;
    m_candidate.reset();
}

std::optional<ModifierFlags> DoubleTapDetector::feed(ModifierFlags flags, TriggerClock::time_point now)
{
    const std::optional<ModifierFlags> tap = m_taps.feed(flags, now);
    if (!tap)
        return std::nullopt;
    if (m_lastKey && *m_lastKey == *tap && now - m_lastTime <= m_maxInterval) {
        m_lastKey.reset();
        return tap;
    }
    m_lastKey = tap;
    m_lastTime = now;
    return std::nullopt;
}

void DoubleTapDetector::reset(ModifierFlags held)
{
    m_taps.arm(held);
    m_lastKey.reset();
}

}  // namespace wendrel
