#include "triggers/DragMonitor.h"

#include "operations/settings/SettingsStore.h"

#include <QFile>

#include <gtest/gtest.h>

using namespace wendrel;
using namespace std::chrono_literals;

namespace {

// Drives the monitor the way the windowing system's adapter does, one sample at a time.
class DragMonitorTest : public ::testing::Test {
protected:
    void SetUp() override
    {
        QFile::remove(SettingsStore::filePath());
        monitor.onRingRequested = [this](RingKind ring, const QStringList& files, QPoint) {
            requests.push_back({ring, files});
        };
        monitor.onDragEnded = [this] { ++ended; };
        monitor.onDoubleTap = [this](RingKind ring) { doubleTaps.push_back(ring); };
    }

    void sample(bool down, ModifierFlags keys, std::chrono::milliseconds at)
    {
        monitor.poll({down, changes, keys, start + at, QPoint(10, 20)});
    }

    // The button goes down, then a drag writes a new selection.
    void startDrag(std::chrono::milliseconds at, ModifierFlags keys = 0)
    {
        sample(true, keys, at);
        ++changes;
        sample(true, keys, at + 16ms);
    }

    qint64 changes = 5;
    std::optional<QStringList> dragFiles = QStringList{QStringLiteral("/home/me/a.png")};
    int reads = 0;
    DragMonitor monitor{5, [this] {
                            ++reads;
                            return dragFiles;
                        }};
    std::vector<std::pair<RingKind, QStringList>> requests;
    std::vector<RingKind> doubleTaps;
    int ended = 0;
    const TriggerClock::time_point start = TriggerClock::now();
};

}  // namespace

TEST_F(DragMonitorTest, TapDuringAFileDragRequestsTheBoundRing)
{
    startDrag(0ms);
    EXPECT_TRUE(monitor.isFileDragActive());
    sample(true, Modifier::shift, 100ms);
    sample(true, 0, 300ms);
    ASSERT_EQ(requests.size(), 1u);
    EXPECT_EQ(requests[0].first, RingKind::convert);
    EXPECT_EQ(requests[0].second, QStringList{QStringLiteral("/home/me/a.png")});

    // Tapping again asks again: that is how the ring pages.
    sample(true, Modifier::shift, 400ms);
    sample(true, 0, 500ms);
    EXPECT_EQ(requests.size(), 2u);

    sample(false, 0, 600ms);
    EXPECT_EQ(ended, 1);
    EXPECT_FALSE(monitor.isFileDragActive());
}

TEST_F(DragMonitorTest, SelectionWrittenBeforeThePressIsNoDrag)
{
    ++changes;  // left over from something earlier, written while the button was up
    sample(true, 0, 0ms);
    sample(true, Modifier::shift, 100ms);
    sample(true, 0, 200ms);
    EXPECT_FALSE(monitor.isFileDragActive());
    EXPECT_TRUE(requests.empty());
    EXPECT_EQ(reads, 0);
}

TEST_F(DragMonitorTest, KeyHeldBeforeTheDragCountsOnlyWhenPressedAgain)
{
    startDrag(0ms, Modifier::shift);
    sample(true, 0, 100ms);
    EXPECT_TRUE(requests.empty());
    sample(true, Modifier::shift, 200ms);
    sample(true, 0, 300ms);
    EXPECT_EQ(requests.size(), 1u);
}

TEST_F(DragMonitorTest, TextDragsAreIgnoredAndReadOnlyOnce)
{
    dragFiles = std::nullopt;
    startDrag(0ms);
    sample(true, 0, 50ms);
    sample(true, Modifier::shift, 100ms);
    sample(true, 0, 200ms);
    EXPECT_FALSE(monitor.isFileDragActive());
    EXPECT_EQ(reads, 1);
    EXPECT_TRUE(requests.empty());
}

TEST_F(DragMonitorTest, FilesThatCantBeReadStillOpenTheRingEmpty)
{
    dragFiles = QStringList{};
    startDrag(0ms);
    sample(true, Modifier::control, 100ms);
    sample(true, 0, 200ms);
    ASSERT_EQ(requests.size(), 1u);
    EXPECT_EQ(requests[0].first, RingKind::tools);
    EXPECT_TRUE(requests[0].second.isEmpty());
}

TEST_F(DragMonitorTest, DoubleTapOutsideADragButNotAcrossItsEnd)
{
    sample(false, Modifier::option, 0ms);
    sample(false, 0, 100ms);
    sample(false, Modifier::option, 200ms);
    sample(false, 0, 300ms);
    EXPECT_EQ(doubleTaps, std::vector<RingKind>{RingKind::actions});

    // A tap made during a drag is never the first half of a pair after it.
    startDrag(1000ms);
    sample(true, Modifier::shift, 1100ms);
    sample(true, 0, 1200ms);
    sample(false, 0, 1250ms);
    sample(false, Modifier::shift, 1300ms);
    sample(false, 0, 1400ms);
    EXPECT_EQ(doubleTaps.size(), 1u);

    // Keys with the button down but no file drag feed nothing.
    sample(true, Modifier::shift, 2000ms);
    sample(true, 0, 2100ms);
    EXPECT_EQ(doubleTaps.size(), 1u);
}

TEST_F(DragMonitorTest, UnboundCombinationsDoNothing)
{
    startDrag(0ms);
    sample(true, Modifier::shift | Modifier::control, 100ms);
    sample(true, 0, 200ms);
    EXPECT_TRUE(requests.empty());
}

TEST_F(DragMonitorTest, EscapeEndsTheDragWhileTheButtonStaysDown)
{
    startDrag(0ms);
    monitor.cancelDrag(0);
    EXPECT_EQ(ended, 1);
    sample(true, Modifier::shift, 100ms);
    sample(true, 0, 200ms);
    EXPECT_TRUE(requests.empty());
    sample(false, 0, 300ms);
    EXPECT_EQ(ended, 1);  // the release after a cancel ends nothing more
}
