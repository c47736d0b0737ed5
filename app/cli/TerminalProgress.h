#pragma once

#include <QElapsedTimer>
#include <QString>

namespace wendrel {

// A one-line progress bar on standard error while a long job runs, only when standard error
// is a terminal: short jobs and scripts see nothing of it.
class TerminalProgress {
public:
    TerminalProgress();
    ~TerminalProgress();

    void update(const QString& title, double fraction);
    void clear();

private:
    bool m_enabled;
    bool m_shown = false;
    QElapsedTimer m_sinceStart;
};

}  // namespace wendrel
