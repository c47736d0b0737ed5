#pragma once

#include <QDateTime>
#include <QObject>
#include <QTimer>

#include <chrono>
#include <functional>
#include <optional>

namespace wendrel {

// The one global switch of the triggers. While paused, modifier taps, double taps and the
// global shortcuts do nothing ("Choose Files…" and the command line still work). A pause is
// stored under "pausedUntil" (seconds since 1970) so it survives a restart, and ends by
// itself at its end time.
class PauseManager : public QObject {
    Q_OBJECT

public:
    enum class Duration { oneHour, eightHours, untilTomorrow, indefinitely };
    static constexpr Duration allDurations[] = {Duration::oneHour, Duration::eightHours, Duration::untilTomorrow,
                                                Duration::indefinitely};

    using Clock = std::function<QDateTime()>;

    // `now` is the clock every decision reads; tests give their own.
    explicit PauseManager(Clock now = &QDateTime::currentDateTime, QObject* parent = nullptr);

    // Picks up a stored pause; one that has ended in the meantime counts as none.
    void load();

    std::optional<QDateTime> pausedUntil() const { return m_pausedUntil; }
    bool isPaused() const;
    bool isIndefinite() const;

    void pause(Duration duration);
    void resume();

    // "Wendrel is paused", "Paused until 15:30", "Paused until 24/11/2026 09:00"; none when
    // not paused.
    std::optional<QString> statusText() const;

    // "For 1 Hour", "For 8 Hours", "Until Tomorrow", "Until I Turn It Back On".
    static QString title(Duration duration);

    // When a pause of this length that starts at `now` ends. "Until Tomorrow" ends at the
    // coming local midnight.
    static QDateTime endOfPause(Duration duration, const QDateTime& now);

    // How long the end-of-pause timer waits: the time left, but at least one second.
    std::optional<std::chrono::milliseconds> timerInterval() const;

    // Told whether the triggers are paused, after every change.
    std::function<void(bool paused)> onChange;

Q_SIGNALS:
    void changed();

private:
    void store();
    void scheduleTimer();
    void announce();

    Clock m_now;
    std::optional<QDateTime> m_pausedUntil;
    QTimer m_timer;
};

}  // namespace wendrel
