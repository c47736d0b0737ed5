#pragma once

#include "JobEvent.h"
#include "RingGeometry.h"
#include "operations/FileOperation.h"
#include "operations/prompt/AskBeforeRunning.h"

#include <QObject>

#include <chrono>
#include <functional>
#include <optional>

namespace wendrel {

class FeedbackSounds;
class JobRunner;
class OperationCatalog;
struct JobReport;
struct JobRequest;

// The one ring that can be open: which ring, for which files, which page, what the pointer
// is over, whether a group is open, and the running of the chosen entry. QtCore only; time
// comes in as arguments, so every rule is testable without waiting.
class RingModel : public QObject {
    Q_OBJECT

public:
    using TimePoint = std::chrono::steady_clock::time_point;

    // How long the pointer rests on a group before its children open.
    static constexpr std::chrono::milliseconds dwell{300};

    RingModel(const OperationCatalog& catalog, JobRunner& runner, QObject* parent = nullptr);

    RingKind kind() const { return m_kind; }
    const QStringList& urls() const { return m_urls; }
    int page() const { return m_page; }
    std::optional<int> hoveredIndex() const { return m_hoveredIndex; }
    const QList<FileOperationPtr>& allOperations() const { return m_allOperations; }
    bool isClickMode() const { return m_clickMode; }
    std::optional<int> openGroupIndex() const { return m_openGroupIndex; }
    const QList<FileOperationPtr>& groupChildren() const { return m_groupChildren; }
    std::optional<int> hoveredChildIndex() const { return m_hoveredChildIndex; }
    JobRunner& runner() const { return m_runner; }

    int pageCount() const;
    QList<FileOperationPtr> visibleOperations() const;
    FileOperationPtr hoveredOperation() const;

    // Shows a ring. Asked again for the same ring and the same files while entries are shown,
    // with `mayAdvance`, it turns to the next page ("Tap the same key again for more"), after
    // the last one back to the first; otherwise it asks the catalog afresh and starts at page 0.
    void load(RingKind kind, const QStringList& urls, bool clickMode, bool mayAdvance);

    // The next ring for the same files: convert, tools, actions, convert...
    void switchRing();

    // The pointer moved over segment `index` (or off the segments). Resting on a group for
    // the dwell time opens it: see dwellDeadline() and advanceTime().
    void setHovered(std::optional<int> index, TimePoint now);
    void setHoveredChild(std::optional<int> index);

    // When the hovered group will open if the pointer stays, if it will.
    std::optional<TimePoint> dwellDeadline() const;

    // Opens the hovered group once its dwell has passed.
    void advanceTime(TimePoint now);

    // Shows the children of the group at `index` of the page; anything else is left alone.
    void openGroup(int index);
    void closeGroup();

    // Segment `index` of the page was chosen, by a click, a digit key or a drop, for `files` or
    // the ring's files: a group opens to show its children, any other entry runs. An index off
    // the page does nothing. An entry that refuses one of the files does not run: the job
    // fails with "<title> doesn't work with this file".
    void activate(int index, const std::optional<QStringList>& files = std::nullopt);

    // Runs the child at `index` of the open group.
    void runChild(int index, const std::optional<QStringList>& files = std::nullopt);

    // Hit tests on the pointer's offset from the centre (dx to the right, dy upward).
    std::optional<int> segmentAt(double dx, double dy) const;
    std::optional<int> childAt(double dx, double dy) const;
    RingGeometry::ChildArc openChildArc() const;

    // Called after every completed run: the controller closes or fades the ring.
    std::function<void()> onFinished;

    // The sound after every run, when `wanted` says so at the run's end (read then, so a change
    // of the setting counts at once). Without sounds, runs end silently.
    struct Feedback {
        FeedbackSounds* sounds = nullptr;
        std::function<bool()> wanted;
    };
    void setFeedback(Feedback feedback) { m_feedback = std::move(feedback); }

    // Asks the user, for entries that want choices before they run (Compress: its target).
    // None means the user cancelled, and nothing runs. Without an asker, entries run with
    // their stored settings.
    PromptAsker askUser;

    // True while the user is being asked.
    bool isAsking() const { return m_asking; }

    // Called when the user cancels the questions: nothing ran.
    std::function<void()> onPromptCancelled;

Q_SIGNALS:
    void changed();
    // "Wendrel.jobFinished": after every successful job.
    void jobFinished(const wendrel::JobEvent& event);

private:
    void startRun(const FileOperationPtr& entry, const QStringList& files);
    void onJobEnded(const JobRequest& request, const JobReport& report);
    void clearTransientState();

    const OperationCatalog& m_catalog;
    JobRunner& m_runner;
    Feedback m_feedback;

    RingKind m_kind = RingKind::convert;
    QStringList m_urls;
    int m_page = 0;
    std::optional<int> m_hoveredIndex;
    QList<FileOperationPtr> m_allOperations;
    bool m_clickMode = false;
    std::optional<int> m_openGroupIndex;
    QList<FileOperationPtr> m_groupChildren;
    std::optional<int> m_hoveredChildIndex;
    std::optional<TimePoint> m_dwellDeadline;

    // The ring and mode a run started from, for the event that announces its end.
    RingKind m_runRing = RingKind::convert;
    bool m_runClickMode = false;
    bool m_asking = false;
};

}  // namespace wendrel
