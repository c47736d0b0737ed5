#pragma once

namespace wendrel {

// The sounds a finished job makes: a light one for success, a warning for failure.
class FeedbackSounds {
public:
    virtual ~FeedbackSounds() = default;
    virtual void playSuccess() = 0;
    virtual void playFailure() = 0;
};

}  // namespace wendrel
