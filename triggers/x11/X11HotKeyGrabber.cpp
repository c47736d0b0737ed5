#include "X11HotKeyGrabber.h"

#include "X11Connection.h"
#include "triggers/TriggerLog.h"

#include <X11/Xlib.h>
#include <X11/XKBlib.h>
#include <X11/keysym.h>

namespace wendrel {

namespace {

// Caps Lock and Num Lock (Mod2 on nearly every keyboard map) must not stop a shortcut.
constexpr unsigned int lockVariants[] = {0, LockMask, Mod2Mask, LockMask | Mod2Mask};

bool accessDenied = false;

int recordAccessErrors(Display*, XErrorEvent* error)
{
    if (error->error_code == BadAccess)
        accessDenied = true;
    return 0;
}

unsigned int xModifiers(quint32 carbonModifiers)
{
    unsigned int mask = 0;
    if (carbonModifiers & HotKey::controlModifier)
        mask |= ControlMask;
    if (carbonModifiers & HotKey::shiftModifier)
        mask |= ShiftMask;
    if (carbonModifiers & HotKey::altModifier)
        mask |= Mod1Mask;
    if (carbonModifiers & HotKey::superModifier)
        mask |= Mod4Mask;
    return mask;
}

}  // namespace

unsigned long keysymForPortableCode(quint32 keyCode)
{
    const std::optional<int> qtKey = qtKeyForPortableCode(keyCode);
    if (!qtKey)
        return NoSymbol;
    const int key = *qtKey;
    if (key >= Qt::Key_A && key <= Qt::Key_Z)
        return XK_a + (key - Qt::Key_A);
    if (key >= Qt::Key_F1 && key <= Qt::Key_F20)
        return XK_F1 + (key - Qt::Key_F1);
    if (key > 0x20 && key < 0x7f)
        return static_cast<unsigned long>(key);  // digits and punctuation: the same codes
    switch (key) {
    case Qt::Key_Space: return XK_space;
    case Qt::Key_Return: return XK_Return;
    case Qt::Key_Tab: return XK_Tab;
    case Qt::Key_Backspace: return XK_BackSpace;
    case Qt::Key_Escape: return XK_Escape;
    case Qt::Key_Delete: return XK_Delete;
    case Qt::Key_Home: return XK_Home;
    case Qt::Key_End: return XK_End;
    case Qt::Key_PageUp: return XK_Prior;
    case Qt::Key_PageDown: return XK_Next;
    case Qt::Key_Left: return XK_Left;
    case Qt::Key_Right: return XK_Right;
    case Qt::Key_Up: return XK_Up;
    case Qt::Key_Down: return XK_Down;
    default: return NoSymbol;
    }
}

X11HotKeyGrabber::X11HotKeyGrabber(X11Connection& connection) : m_connection(connection) {}

bool X11HotKeyGrabber::grab(int id, const HotKey& hotKey)
{
    release(id);
    Display* display = m_connection.display();
    const KeySym keysym = keysymForPortableCode(hotKey.keyCode);
    const KeyCode keycode = keysym == NoSymbol ? 0 : XKeysymToKeycode(display, keysym);
    if (keycode == 0)
        return false;
    const unsigned int modifiers = xModifiers(hotKey.carbonModifiers);

    XSync(display, False);
    accessDenied = false;
    XErrorHandler previous = XSetErrorHandler(recordAccessErrors);
    for (unsigned int variant : lockVariants)
        XGrabKey(display, keycode, modifiers | variant, m_connection.root(), True, GrabModeAsync, GrabModeAsync);
    XSync(display, False);
    XSetErrorHandler(previous);

    if (accessDenied) {
        for (unsigned int variant : lockVariants)
            XUngrabKey(display, keycode, modifiers | variant, m_connection.root());
        XSync(display, False);
        return false;
    }
    m_grabs.insert(id, {keycode, modifiers});
    qCDebug(lcTriggers, "shortcut %d grabbed", id);
    return true;
}

void X11HotKeyGrabber::release(int id)
{
    const auto found = m_grabs.constFind(id);
    if (found == m_grabs.cend())
        return;
    for (unsigned int variant : lockVariants)
        XUngrabKey(m_connection.display(), found->keycode, found->modifiers | variant, m_connection.root());
    XFlush(m_connection.display());
    m_grabs.erase(found);
}

std::optional<int> X11HotKeyGrabber::idForPress(unsigned int keycode, unsigned int state) const
{
    const unsigned int modifiers = state & (ControlMask | ShiftMask | Mod1Mask | Mod4Mask);
    for (auto it = m_grabs.cbegin(); it != m_grabs.cend(); ++it) {
        if (it->keycode == keycode && it->modifiers == modifiers)
            return it.key();
    }
    return std::nullopt;
}

}  // namespace wendrel
