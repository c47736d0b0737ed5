#include "InterruptWatch.h"

#include <atomic>
#include <csignal>

namespace wendrel {

namespace {

std::atomic_bool interruptPending{false};

extern "C" void onInterrupt(int)
{
    interruptPending = true;
    // The next interrupt takes the default action: a stuck job can still be killed.
    std::signal(SIGINT, SIG_DFL);
    std::signal(SIGTERM, SIG_DFL);
}

}  // namespace

InterruptWatch::InterruptWatch(QObject* parent) : QObject(parent)
{
    interruptPending = false;
    std::signal(SIGINT, onInterrupt);
    std::signal(SIGTERM, onInterrupt);
    // A signal handler may do almost nothing; the flag is picked up on the event loop.
    m_poll.setInterval(50);
    connect(&m_poll, &QTimer::timeout, this, [this] {
        if (interruptPending.exchange(false))
            Q_EMIT interrupted();
    });
    m_poll.start();
}

InterruptWatch::~InterruptWatch()
{
    std::signal(SIGINT, SIG_DFL);
    std::signal(SIGTERM, SIG_DFL);
}

}  // namespace wendrel
