#pragma once

#include "Modifiers.h"
#include "operations/RingKind.h"

#include <QHash>

#include <optional>

namespace wendrel {

// Which modifier keys open which ring during a drag, and whether a double tap of them opens
// it outside one. Read afresh from the settings at every call ("ringKeyBindings", stored as
// {"convert": {"rawValue": 131072}, ...}, and "doubleTap.<ring>").
namespace RingKeyBindings {

// Shift for convert, Ctrl for tools, Alt for actions, overridden by what the user stored.
QHash<RingKind, ModifierFlags> bindings();

ModifierFlags comboForRing(RingKind ring);

// The ring bound to exactly these keys: Shift + Ctrl does not open the ring bound to Shift.
std::optional<RingKind> ringForFlags(ModifierFlags flags);

// Binds `combo` to `ring`. A ring that had `combo` gets `ring`'s previous keys, so no two
// rings ever share a combination.
void setComboForRing(ModifierFlags combo, RingKind ring);

// Whether a double tap opens `ring`; on unless switched off.
bool isDoubleTapEnabled(RingKind ring);
void setDoubleTapEnabled(RingKind ring, bool enabled);

ModifierFlags defaultCombo(RingKind ring);

}  // namespace RingKeyBindings
}  // namespace wendrel
