#pragma once

#include <QString>
#include <QtGlobal>

namespace wendrel {

// Modifier keys as stored in the settings: the numbers are the design's, kept on every
// platform so settings files travel. On Linux, Option is Alt and Command is Super.
using ModifierFlags = quint64;

namespace Modifier {
inline constexpr ModifierFlags shift = 0x20000;
inline constexpr ModifierFlags control = 0x40000;
inline constexpr ModifierFlags option = 0x80000;
inline constexpr ModifierFlags command = 0x100000;
// Only these four count: Caps Lock, Num Lock and the like never do.
inline constexpr ModifierFlags mask = 0x1E0000;
}  // namespace Modifier

// "⌃⌥⇧⌘" for the keys that are set, in that order, with nothing between them.
QString symbolLabel(ModifierFlags flags);

// "Shift + Ctrl + Alt + Super" for the keys that are set, in that order.
QString nameLabel(ModifierFlags flags);

}  // namespace wendrel
