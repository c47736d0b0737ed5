#include "RingPlacement.h"

#include <algorithm>

namespace wendrel {

QPoint ringPanelOrigin(QPoint point, const QList<ScreenArea>& screens, int side)
{
    QPoint origin(point.x() - side / 2, point.y() - side / 2);
    if (screens.isEmpty())
        return origin;
    const auto containing = std::find_if(screens.cbegin(), screens.cend(),
                                         [&](const ScreenArea& screen) { return screen.frame.contains(point); });
    const QRect visible = (containing != screens.cend() ? *containing : screens.first()).visible;
    // Clamped to the left then the right edge, to the bottom then the top edge: on a screen
    // smaller than the panel the right and the top edges win.
    origin.setX(std::max(origin.x(), visible.left()));
    origin.setX(std::min(origin.x(), visible.left() + visible.width() - side));
    origin.setY(std::min(origin.y(), visible.top() + visible.height() - side));
    origin.setY(std::max(origin.y(), visible.top()));
    return origin;
}

}  // namespace wendrel
