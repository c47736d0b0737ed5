#include "triggers/ModifierTapDetector.h"

#include <gtest/gtest.h>

#include <type_traits>
#include <vector>

using namespace wendrel;
using namespace std::chrono_literals;

namespace {

constexpr ModifierFlags shift = Modifier::shift;
constexpr ModifierFlags control = Modifier::control;
constexpr ModifierFlags capsLock = 0x10000;

// One sample of the keys held at a moment, and the tap it completes (none unless given).
// A step at `rearm` arms (or resets) the detector with `keys` already held instead.
constexpr int rearm = -1;
struct Step {
    ModifierFlags keys;
    int ms;
    std::optional<ModifierFlags> completes = std::nullopt;
};
struct Script {
    const char* rule;
    std::vector<Step> steps;
};

// Feeds each script to a fresh detector and checks what every step gives.
template <typename Detector>
void play(const std::vector<Script>& scripts)
{
    const TriggerClock::time_point t0 = TriggerClock::now();
    for (const Script& script : scripts) {
        Detector detector;
        for (const Step& step : script.steps) {
            if (step.ms == rearm) {
                if constexpr (std::is_same_v<Detector, ModifierTapDetector>)
                    detector.arm(step.keys);
                else
                    detector.reset(step.keys);
                continue;
            }
            EXPECT_EQ(detector.feed(step.keys, t0 + std::chrono::milliseconds(step.ms)), step.completes)
                << script.rule << ", at " << step.ms << " ms";
        }
    }
}

}  // namespace

TEST(ModifierTapDetector, TapsAreReleasesWithinHalfASecondOfTheFirstKey)
{
    play<ModifierTapDetector>({
        {"released within half a second, inclusive", {{shift, 0}, {0, 500, shift}, {shift, 1000}, {0, 1510}}},
        {"every key pressed together belongs to the combination",
         {{shift, 0}, {shift | control, 100}, {control, 200}, {0, 300, shift | control}}},
        {"the limit counts from the first key", {{shift, 0}, {shift | control, 450}, {0, 520}}},
        {"a key held when armed counts only after its release", {{shift, rearm}, {0, 100}, {shift, 200}, {0, 300, shift}}},
        {"lock keys never count", {{capsLock, 0}, {shift | capsLock, 10}, {capsLock, 100, shift}}},
    });
}

TEST(DoubleTapDetector, SecondTapOfTheSameKeysWithinFourTenths)
{
    play<DoubleTapDetector>({
        {"second tap within four tenths, inclusive", {{shift, 900}, {0, 1000}, {shift, 1300}, {0, 1400, shift}}},
        {"a late second tap starts a new pair",
         {{shift, 900}, {0, 1000}, {shift, 1300}, {0, 1410}, {shift, 1500}, {0, 1600, shift}}},
        {"three taps open once and a fourth again",
         {{shift, 0}, {0, 100}, {shift, 200}, {0, 300, shift}, {shift, 400}, {0, 500}, {shift, 600}, {0, 700, shift}}},
        {"different keys are no pair", {{shift, 0}, {0, 100}, {control, 200}, {0, 300}}},
        {"reset forgets the first half", {{shift, 0}, {0, 100}, {0, rearm}, {shift, 200}, {0, 300}}},
    });
}
