#pragma once

#include "operations/JobRunner.h"

#include <optional>

namespace wendrel {

// What the ring does after a job has ended, given what the job's status says and whether an
// outcome is already on show: hide now, or after a delay long enough to read it.
struct HideDecision {
    std::optional<double> delaySeconds;  // none: hide now
    bool resultShown = false;            // the outcome is on show from now on
};

HideDecision hideAfterJob(JobStatus::State state, bool resultShown);

}  // namespace wendrel
