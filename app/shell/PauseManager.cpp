#include "PauseManager.h"

#include "operations/Logging.h"
#include "operations/settings/SettingsStore.h"

#include <QCoreApplication>
#include <QLocale>

namespace wendrel {

namespace {

const QString storedKey = QStringLiteral("pausedUntil");

// "Until I Turn It Back On" is a pause that ends in the year 4001.
const QDateTime distantFuture = QDateTime::fromSecsSinceEpoch(64092211200, Qt::UTC);

}  // namespace

PauseManager::PauseManager(Clock now, QObject* parent) : QObject(parent), m_now(std::move(now))
{
    m_timer.setSingleShot(true);
    connect(&m_timer, &QTimer::timeout, this, &PauseManager::resume);
}

void PauseManager::load()
{
    const double seconds = SettingsStore::value(storedKey, 0.0).toDouble();
    m_pausedUntil.reset();
    if (seconds > 0) {
        const QDateTime until = QDateTime::fromMSecsSinceEpoch(qint64(seconds * 1000), Qt::UTC);
        if (until > m_now())
            m_pausedUntil = until;
        else
            SettingsStore::remove(storedKey);
    }
    scheduleTimer();
    announce();
}

bool PauseManager::isPaused() const { return m_pausedUntil && *m_pausedUntil > m_now(); }

bool PauseManager::isIndefinite() const { return m_pausedUntil && *m_pausedUntil == distantFuture; }

QDateTime PauseManager::endOfPause(Duration duration, const QDateTime& now)
{
    switch (duration) {
    case Duration::oneHour: return now.addSecs(3600);
    case Duration::eightHours: return now.addSecs(8 * 3600);
    case Duration::untilTomorrow: return QDateTime(now.toLocalTime().date().addDays(1), QTime(0, 0));
    case Duration::indefinitely: return distantFuture;
    }
    return now;
}

void PauseManager::pause(Duration duration)
{
    m_pausedUntil = endOfPause(duration, m_now());
    store();
    scheduleTimer();
    qCInfo(lcRing, "pause → %s", qUtf8Printable(m_pausedUntil->toString(Qt::ISODate)));
    announce();
}

void PauseManager::resume()
{
    m_pausedUntil.reset();
    SettingsStore::remove(storedKey);
    m_timer.stop();
    qCInfo(lcRing, "pause → off");
    announce();
}

void PauseManager::store()
{
    SettingsStore::setValue(storedKey, double(m_pausedUntil->toMSecsSinceEpoch()) / 1000.0);
}

std::optional<std::chrono::milliseconds> PauseManager::timerInterval() const
{
    if (!m_pausedUntil || isIndefinite())
        return std::nullopt;
    const qint64 left = m_now().msecsTo(*m_pausedUntil);
    return std::chrono::milliseconds(std::max<qint64>(left, 1000));
}

void PauseManager::scheduleTimer()
{
    m_timer.stop();
    if (const auto interval = timerInterval())
        m_timer.start(*interval);
}

void PauseManager::announce()
{
    if (onChange)
        onChange(isPaused());
    Q_EMIT changed();
}

std::optional<QString> PauseManager::statusText() const
{
    if (!isPaused())
        return std::nullopt;
    if (isIndefinite())
        return QCoreApplication::translate("PauseManager", "Wendrel is paused");
    const QLocale locale;
    const QDateTime end = m_pausedUntil->toLocalTime();
    const QString time = locale.toString(end.time(), QLocale::ShortFormat);
    const QString when = end.date() == m_now().toLocalTime().date()
                             ? time
                             : locale.toString(end.date(), QLocale::ShortFormat) + u' ' + time;
    return QCoreApplication::translate("PauseManager", "Paused until %1").arg(when);
}

QString PauseManager::title(Duration duration)
{
    switch (duration) {
    case Duration::oneHour: return QCoreApplication::translate("PauseManager", "For 1 Hour");
    case Duration::eightHours: return QCoreApplication::translate("PauseManager", "For 8 Hours");
    case Duration::untilTomorrow: return QCoreApplication::translate("PauseManager", "Until Tomorrow");
    case Duration::indefinitely: return QCoreApplication::translate("PauseManager", "Until I Turn It Back On");
    }
    return {};
}

}  // namespace wendrel
