#pragma once

namespace wendrel {

// Applies the chosen appearance, setting "appearance": "light", "dark", or "system" (the
// default: the desktop's own palette).
void applyAppearance();

}  // namespace wendrel
