#pragma once

#include "FeedbackSounds.h"

struct ca_context;

namespace wendrel {

// The desktop's own event sounds ("complete" and "dialog-error" of the freedesktop sound
// theme) through libcanberra. Without a sound server it stays silent.
class CanberraSounds final : public FeedbackSounds {
public:
    CanberraSounds();
    ~CanberraSounds() override;
    CanberraSounds(const CanberraSounds&) = delete;
    CanberraSounds& operator=(const CanberraSounds&) = delete;

    void playSuccess() override;
    void playFailure() override;

private:
    void play(const char* eventId, const char* description);

    ca_context* m_context = nullptr;
};

}  // namespace wendrel
