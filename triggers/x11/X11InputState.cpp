#include "X11InputState.h"

#include "X11Connection.h"

#include <X11/Xlib.h>
#include <X11/keysym.h>

namespace wendrel {

ModifierFlags modifierForKeysym(unsigned long keysym)
{
    switch (keysym) {
    case XK_Shift_L:
    case XK_Shift_R: return Modifier::shift;
    case XK_Control_L:
    case XK_Control_R: return Modifier::control;
    case XK_Alt_L:
    case XK_Alt_R:
    case XK_Meta_L:
    case XK_Meta_R: return Modifier::option;
    case XK_Super_L:
    case XK_Super_R: return Modifier::command;
    default: return 0;
    }
}

ModifierFlags modifiersFromMask(unsigned int mask)
{
    ModifierFlags flags = 0;
    if (mask & ShiftMask)
        flags |= Modifier::shift;
    if (mask & ControlMask)
        flags |= Modifier::control;
    if (mask & Mod1Mask)
        flags |= Modifier::option;
    if (mask & Mod4Mask)
        flags |= Modifier::command;
    return flags;
}

PointerState queryPointerState(X11Connection& connection)
{
    Window rootReturn = 0;
    Window child = 0;
    int rootX = 0;
    int rootY = 0;
    int windowX = 0;
    int windowY = 0;
    unsigned int mask = 0;
    XQueryPointer(connection.display(), connection.root(), &rootReturn, &child, &rootX, &rootY, &windowX, &windowY,
                  &mask);
    return {modifiersFromMask(mask), (mask & Button1Mask) != 0};
}

}  // namespace wendrel
