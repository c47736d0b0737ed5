#pragma once

#include <QList>
#include <QPoint>
#include <QRect>

namespace wendrel {

// A screen as the ring's placement sees it.
struct ScreenArea {
    QRect frame;    // the whole screen, in global logical coordinates
    QRect visible;  // without panels and docks
};

// The top-left corner for a square panel of `side` centred on `point`, kept inside the visible
// area of the screen that contains the point (the first screen when none does).
QPoint ringPanelOrigin(QPoint point, const QList<ScreenArea>& screens, int side);

}  // namespace wendrel
