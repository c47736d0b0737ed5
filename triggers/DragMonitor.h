#pragma once

#include "ModifierTapDetector.h"
#include "operations/RingKind.h"

#include <QPoint>
#include <QStringList>

#include <functional>
#include <optional>

namespace wendrel {

// Notices file drags anywhere on the screen and the modifier taps made during them, and
// double taps of a modifier outside a drag. It only reports; the owner decides what happens.
//
// It is fed samples of the pointer button, the drag selection's change count (a new drag
// changes it), the modifier keys and the time, whenever any of them may have changed; no
// windowing system appears here.
class DragMonitor {
public:
    struct Sample {
        bool buttonDown = false;
        qint64 selectionChanges = 0;
        ModifierFlags modifiers = 0;
        TriggerClock::time_point now{};
        QPoint pointer;
    };

    // Reads the files of the drag that just began: the list (possibly empty when the drag
    // announces files it can't hand over), or none for a drag without files.
    using FileReader = std::function<std::optional<QStringList>()>;

    DragMonitor(qint64 initialSelectionChanges, FileReader readFiles);

    std::function<void(RingKind ring, const QStringList& files, QPoint pointer)> onRingRequested;
    std::function<void()> onDragEnded;
    std::function<void(RingKind ring)> onDoubleTap;

    void poll(const Sample& sample);

    // Escape cancels a drag while the button may stay down: the drag is over for the monitor
    // too, and later taps during the same press open nothing.
    void cancelDrag(ModifierFlags held);

    bool isFileDragActive() const { return m_fileDragActive; }
    const QStringList& draggedFiles() const { return m_draggedFiles; }

    // Whether samples are still needed at a steady rate: while the button is down, timing
    // matters; otherwise key and button events alone are enough.
    bool needsSteadySamples() const { return m_buttonWasDown || m_fileDragActive; }

private:
    FileReader m_readFiles;
    qint64 m_lastSelectionChanges;
    bool m_buttonWasDown = false;
    qint64 m_selectionChangesAtPress = 0;
    bool m_fileDragActive = false;
    QStringList m_draggedFiles;
    ModifierTapDetector m_taps;
    DoubleTapDetector m_doubleTaps;
};

}  // namespace wendrel
