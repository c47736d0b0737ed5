#include "TerminalProgress.h"

#include <cstdio>
#include <unistd.h>

namespace wendrel {

namespace {

// Jobs that end sooner than this never show a bar.
constexpr qint64 delayMilliseconds = 400;
constexpr int barWidth = 30;

}  // namespace

TerminalProgress::TerminalProgress() : m_enabled(::isatty(STDERR_FILENO) == 1)
{
    m_sinceStart.start();
}

TerminalProgress::~TerminalProgress() { clear(); }

void TerminalProgress::update(const QString& title, double fraction)
{
    if (!m_enabled || m_sinceStart.elapsed() < delayMilliseconds)
        return;
    const int filled = static_cast<int>(fraction * barWidth + 0.5);
    const QString bar = QString(filled, u'#') + QString(barWidth - filled, u'.');
    std::fprintf(stderr, "\r%s [%s] %3d%%\033[K", qUtf8Printable(title), qUtf8Printable(bar),
                 static_cast<int>(fraction * 100 + 0.5));
    std::fflush(stderr);
    m_shown = true;
}

void TerminalProgress::clear()
{
    if (!m_shown)
        return;
    std::fprintf(stderr, "\r\033[K");
    std::fflush(stderr);
    m_shown = false;
}

}  // namespace wendrel
