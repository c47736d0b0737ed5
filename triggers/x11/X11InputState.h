#pragma once

#include "triggers/Modifiers.h"

namespace wendrel {

class X11Connection;

// The modifier a key gives (Shift, Control, Alt or Meta as Option, Super as Command), or none.
ModifierFlags modifierForKeysym(unsigned long keysym);

// The four modifiers that count, from an X state mask.
ModifierFlags modifiersFromMask(unsigned int mask);

struct PointerState {
    ModifierFlags modifiers = 0;
    bool buttonDown = false;  // the left button
};

// What the server says is held right now. It answers even while another client grabs the
// pointer, as a drag source does.
PointerState queryPointerState(X11Connection& connection);

}  // namespace wendrel
