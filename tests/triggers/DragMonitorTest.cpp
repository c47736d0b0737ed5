#include "triggers/DragMonitor.h"

#include "operations/settings/SettingsStore.h"

#include <QFile>

#include <gtest/gtest.h>

using namespace wendrel;
using namespace std::chrono_literals;

namespace {

using Request = std::pair<RingKind, QStringList>;

// What the windowing system's adapter reports at a moment: the button, the modifier keys, and
// whether a new selection was written just before (a drag writes one). `escape` cancels the
// drag instead, the button and keys staying as they are.
struct Moment {
    bool down;
    ModifierFlags keys;
    int ms;
    enum { sample, newSelection, escape } what = sample;
};

// A run of moments and what must have happened after it.
struct Script {
    const char* rule;
    std::optional<QStringList> dragged;  // what reading the selection gives; none for text
    std::vector<Moment> moments;
    std::vector<Request> requests;
    std::vector<RingKind> doubleTaps;
    int ended;
    int reads;
    bool dragActive;
};

const QStringList picture{QStringLiteral("/home/me/a.png")};
constexpr ModifierFlags shift = Modifier::shift;

}  // namespace

TEST(DragMonitor, TapsDuringAFileDragRequestTheBoundRingAndNothingElseDoes)
{
    const Moment press{true, 0, 0}, drag{true, 0, 16, Moment::newSelection};
    const std::vector<Script> scripts{
        // Tapping again asks again: that is how the ring pages. Releasing the button ends the drag.
        {"tap during a file drag", picture,
         {press, drag, {true, shift, 100}, {true, 0, 300}, {true, shift, 400}, {true, 0, 500}, {false, 0, 600}},
         {{RingKind::convert, picture}, {RingKind::convert, picture}}, {}, 1, 1, false},
        // Left over from something earlier, written while the button was up.
        {"selection written before the press is no drag", picture,
         {{true, 0, 0, Moment::newSelection}, {true, shift, 100}, {true, 0, 200}}, {}, {}, 0, 0, false},
        {"a key held before the drag counts only when pressed again", picture,
         {{true, shift, 0}, {true, shift, 16, Moment::newSelection}, {true, 0, 100}, {true, shift, 200}, {true, 0, 300}},
         {{RingKind::convert, picture}}, {}, 0, 1, true},
        {"text drags are ignored and read only once", std::nullopt,
         {press, drag, {true, 0, 50}, {true, shift, 100}, {true, 0, 200}}, {}, {}, 0, 1, false},
        {"files that can't be read still open the ring, empty", QStringList{},
         {press, drag, {true, Modifier::control, 100}, {true, 0, 200}}, {{RingKind::tools, {}}}, {}, 0, 1, true},
        {"unbound combinations do nothing", picture,
         {press, drag, {true, shift | Modifier::control, 100}, {true, 0, 200}}, {}, {}, 0, 1, true},
        // The release after a cancel ends nothing more.
        {"escape ends the drag while the button stays down", picture,
         {press, drag, {true, 0, 20, Moment::escape}, {true, shift, 100}, {true, 0, 200}, {false, 0, 300}},
         {}, {}, 1, 1, false},
        // A tap made during a drag is never the first half of a pair after it, and keys with the
        // button down but no file drag feed nothing.
        {"double taps outside a drag but not across its end", picture,
         {{false, Modifier::option, 0}, {false, 0, 100}, {false, Modifier::option, 200}, {false, 0, 300},
          {true, 0, 1000}, {true, 0, 1016, Moment::newSelection}, {true, shift, 1100}, {true, 0, 1200},
          {false, 0, 1250}, {false, shift, 1300}, {false, 0, 1400},
          {true, shift, 2000}, {true, 0, 2100}},
         {{RingKind::convert, picture}}, {RingKind::actions}, 1, 1, false},
    };
    for (const Script& script : scripts) {
        SCOPED_TRACE(script.rule);
        QFile::remove(SettingsStore::filePath());
        int reads = 0;
        DragMonitor monitor{5, [&] {
                                ++reads;
                                return script.dragged;
                            }};
        std::vector<Request> requests;
        std::vector<RingKind> doubleTaps;
        int ended = 0;
        monitor.onRingRequested = [&](RingKind ring, const QStringList& files, QPoint) { requests.push_back({ring, files}); };
        monitor.onDragEnded = [&] { ++ended; };
        monitor.onDoubleTap = [&](RingKind ring) { doubleTaps.push_back(ring); };
        qint64 changes = 5;
        const TriggerClock::time_point start = TriggerClock::now();
        for (const Moment& moment : script.moments) {
            if (moment.what == Moment::escape) {
                monitor.cancelDrag(moment.keys);
                continue;
            }
            changes += moment.what == Moment::newSelection;
            monitor.poll({moment.down, changes, moment.keys, start + std::chrono::milliseconds(moment.ms), QPoint(10, 20)});
        }
        EXPECT_EQ(requests, script.requests);
        EXPECT_EQ(doubleTaps, script.doubleTaps);
        EXPECT_EQ(ended, script.ended);
        EXPECT_EQ(reads, script.reads);
        EXPECT_EQ(monitor.isFileDragActive(), script.dragActive);
    }
}
