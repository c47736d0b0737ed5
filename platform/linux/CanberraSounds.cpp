#include "platform/CanberraSounds.h"

#include <QLoggingCategory>

#include <canberra.h>

namespace wendrel {

namespace {
Q_LOGGING_CATEGORY(lcPlatform, "wendrel.platform", QtInfoMsg)
}

CanberraSounds::CanberraSounds()
{
    if (ca_context_create(&m_context) != CA_SUCCESS) {
        m_context = nullptr;
        return;
    }
    ca_context_change_props(m_context, CA_PROP_APPLICATION_NAME, "Wendrel", CA_PROP_APPLICATION_ID,
                            "org.wendrel.Wendrel", nullptr);
    // Through the desktop's sound server only: probing raw ALSA devices on a machine without
    // one fills the terminal with the sound library's complaints.
    if (ca_context_set_driver(m_context, "pulse") != CA_SUCCESS || ca_context_open(m_context) != CA_SUCCESS) {
        ca_context_destroy(m_context);
        m_context = nullptr;
    }
}

CanberraSounds::~CanberraSounds()
{
    if (m_context)
        ca_context_destroy(m_context);
}

void CanberraSounds::playSuccess() { play("complete", "Job finished"); }

void CanberraSounds::playFailure() { play("dialog-error", "Job failed"); }

void CanberraSounds::play(const char* eventId, const char* description)
{
    if (!m_context)
        return;
    const int result = ca_context_play(m_context, 0, CA_PROP_EVENT_ID, eventId, CA_PROP_EVENT_DESCRIPTION,
                                       description, nullptr);
    if (result != CA_SUCCESS)
        qCDebug(lcPlatform, "sound %s not played: %s", eventId, ca_strerror(result));
}

}  // namespace wendrel
