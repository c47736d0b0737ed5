#pragma once

#include <QObject>
#include <QTimer>

namespace wendrel {

// Turns Ctrl+C (SIGINT) and SIGTERM into a signal on the event loop, so a command-line job is
// cancelled and cleans up its scratch folder instead of dying halfway. A second Ctrl+C ends
// the process at once.
class InterruptWatch : public QObject {
    Q_OBJECT

public:
    explicit InterruptWatch(QObject* parent = nullptr);
    ~InterruptWatch() override;

Q_SIGNALS:
    void interrupted();

private:
    QTimer m_poll;
};

}  // namespace wendrel
