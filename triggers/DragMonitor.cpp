#include "DragMonitor.h"

#include "RingKeyBindings.h"

namespace wendrel {

DragMonitor::DragMonitor(qint64 initialSelectionChanges, FileReader readFiles)
    : m_readFiles(std::move(readFiles)), m_lastSelectionChanges(initialSelectionChanges)
{
}

void DragMonitor::poll(const Sample& sample)
{
    const ModifierFlags modifiers = sample.modifiers & Modifier::mask;
    if (sample.buttonDown) {
        if (!m_buttonWasDown)
            m_selectionChangesAtPress = sample.selectionChanges;
        // A drag selection that changed during this press, and that was not seen before, is a
        // new drag. One left from an earlier drag is never taken for it.
        if (!m_fileDragActive && sample.selectionChanges != m_selectionChangesAtPress
            && sample.selectionChanges != m_lastSelectionChanges) {
            m_lastSelectionChanges = sample.selectionChanges;
            if (const std::optional<QStringList> files = m_readFiles ? m_readFiles() : std::nullopt) {
                m_fileDragActive = true;
                m_draggedFiles = *files;
                // A key already held when the drag began counts only once released.
                m_taps.arm(modifiers);
            }
        }
    }

    if (!m_fileDragActive) {
        if (!sample.buttonDown) {
            if (const std::optional<ModifierFlags> combo = m_doubleTaps.feed(modifiers, sample.now)) {
                if (const std::optional<RingKind> ring = RingKeyBindings::ringForFlags(*combo); ring && onDoubleTap)
                    onDoubleTap(*ring);
            }
        }
    } else if (sample.buttonDown) {
        if (const std::optional<ModifierFlags> combo = m_taps.feed(modifiers, sample.now)) {
            if (const std::optional<RingKind> ring = RingKeyBindings::ringForFlags(*combo); ring && onRingRequested)
                onRingRequested(*ring, m_draggedFiles, sample.pointer);
        }
    } else {
        // The button is up: the drag ended.
        m_fileDragActive = false;
        m_draggedFiles.clear();
        m_doubleTaps.reset(modifiers);
        if (onDragEnded)
            onDragEnded();
    }
    m_buttonWasDown = sample.buttonDown;
}

}  // namespace wendrel

namespace wendrel {

void DragMonitor::cancelDrag(ModifierFlags held)
{
    if (!m_fileDragActive)
        return;
    m_fileDragActive = false;
    m_draggedFiles.clear();
    m_doubleTaps.reset(held & Modifier::mask);
    if (onDragEnded)
        onDragEnded();
}

}  // namespace wendrel
