#include "platform/WindowSystem.h"

#include <QGuiApplication>

#include <X11/Xlib.h>

namespace wendrel {

bool hasCompositingManager()
{
    const auto* x11 = qGuiApp ? qGuiApp->nativeInterface<QNativeInterface::QX11Application>() : nullptr;
    if (!x11 || !x11->display())
        return true;  // not X11: Wayland compositors always composite
    Display* display = x11->display();
    const QByteArray selection = "_NET_WM_CM_S" + QByteArray::number(DefaultScreen(display));
    const Atom atom = XInternAtom(display, selection.constData(), False);
    return XGetSelectionOwner(display, atom) != None;
}

}  // namespace wendrel
