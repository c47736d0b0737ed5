#include "app/shell/PauseManager.h"

#include "operations/settings/SettingsStore.h"

#include <QFile>

#include <gtest/gtest.h>

using namespace wendrel;
using namespace std::chrono_literals;

namespace {

class PauseManagerTest : public ::testing::Test {
protected:
    void SetUp() override { QFile::remove(SettingsStore::filePath()); }
    void TearDown() override { QFile::remove(SettingsStore::filePath()); }

    // A manager whose clock reads `now`, as a relaunch at that moment would.
    std::unique_ptr<PauseManager> launchedAt(const QDateTime& moment)
    {
        now = moment;
        auto manager = std::make_unique<PauseManager>([this] { return now; });
        manager->load();
        return manager;
    }

    QDateTime now;
    const QDateTime noon{QDate(2026, 11, 20), QTime(12, 0)};
};

}  // namespace

TEST_F(PauseManagerTest, OneHourSurvivesARestartAndEndsOnTime)
{
    auto first = launchedAt(noon);
    std::vector<bool> told;
    first->onChange = [&](bool paused) { told.push_back(paused); };
    first->pause(PauseManager::Duration::oneHour);
    EXPECT_TRUE(first->isPaused());
    EXPECT_EQ(told, std::vector<bool>{true});

    auto halfway = launchedAt(noon.addSecs(30 * 60));
    EXPECT_TRUE(halfway->isPaused());
    ASSERT_TRUE(halfway->timerInterval());
    EXPECT_NEAR(double(halfway->timerInterval()->count()), 30 * 60 * 1000.0, 1000);
    now = noon.addSecs(3600).addMSecs(-200);  // 0.2 s before the end the timer still waits a second
    EXPECT_EQ(halfway->timerInterval(), 1000ms);

    auto later = launchedAt(noon.addSecs(2 * 3600));
    EXPECT_FALSE(later->isPaused());
    EXPECT_EQ(later->pausedUntil(), std::nullopt);
    EXPECT_FALSE(SettingsStore::text(QStringLiteral("pausedUntil")).has_value());
}

TEST_F(PauseManagerTest, UntilTomorrowEndsAtTheComingMidnight)
{
    const QDateTime lateEvening(QDate(2026, 11, 20), QTime(23, 59));
    EXPECT_EQ(PauseManager::endOfPause(PauseManager::Duration::untilTomorrow, lateEvening),
              QDateTime(QDate(2026, 11, 21), QTime(0, 0)));
    EXPECT_EQ(PauseManager::endOfPause(PauseManager::Duration::eightHours, noon), noon.addSecs(8 * 3600));
}

TEST_F(PauseManagerTest, IndefinitePauseHasNoTimerAndSaysSo)
{
    auto manager = launchedAt(noon);
    manager->pause(PauseManager::Duration::indefinitely);
    EXPECT_TRUE(manager->isIndefinite());
    EXPECT_EQ(manager->timerInterval(), std::nullopt);
    EXPECT_EQ(manager->statusText(), std::optional<QString>(QStringLiteral("Wendrel is paused")));
    auto relaunched = launchedAt(noon.addDays(400));
    EXPECT_TRUE(relaunched->isIndefinite());
    EXPECT_TRUE(relaunched->isPaused());
}

TEST_F(PauseManagerTest, StatusShowsTheDateOnlyWhenTheEndIsNotToday)
{
    auto manager = launchedAt(noon);
    manager->pause(PauseManager::Duration::oneHour);
    const QString today = manager->statusText().value_or(QString());
    EXPECT_TRUE(today.startsWith(u"Paused until "));
    EXPECT_FALSE(today.contains(u"2026")) << today.toStdString();

    now = QDateTime(QDate(2026, 11, 20), QTime(22, 0));
    manager->pause(PauseManager::Duration::eightHours);
    EXPECT_NE(manager->statusText().value_or(QString()), today);
    EXPECT_GT(manager->statusText().value_or(QString()).size(), today.size());
}

TEST_F(PauseManagerTest, ResumeOrADamagedValueMeansNotPaused)
{
    auto manager = launchedAt(noon);
    std::vector<bool> told;
    manager->onChange = [&](bool paused) { told.push_back(paused); };
    manager->pause(PauseManager::Duration::eightHours);
    manager->resume();
    EXPECT_FALSE(manager->isPaused());
    EXPECT_EQ(manager->statusText(), std::nullopt);
    EXPECT_EQ(told, (std::vector<bool>{true, false}));
    EXPECT_FALSE(launchedAt(noon.addSecs(60))->isPaused());

    SettingsStore::setValue(QStringLiteral("pausedUntil"), QStringLiteral("soon"));  // damaged: not paused
    EXPECT_FALSE(launchedAt(noon)->isPaused());
}
