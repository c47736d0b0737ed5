#include "HidePolicy.h"

namespace wendrel {

HideDecision hideAfterJob(JobStatus::State state, bool resultShown)
{
    switch (state) {
    case JobStatus::State::running:
        return {0.5, resultShown};
    case JobStatus::State::finished:
        // A result stays long enough to read its name; a second outcome closes the ring.
        return resultShown ? HideDecision{std::nullopt, true} : HideDecision{2.0, true};
    case JobStatus::State::failed:
        // A failure stays longer: its message is worth reading.
        return resultShown ? HideDecision{std::nullopt, true} : HideDecision{4.0, true};
    case JobStatus::State::idle:
        break;
    }
    return {std::nullopt, resultShown};
}

}  // namespace wendrel
