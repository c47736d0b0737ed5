#include "PageRotation.h"

namespace wendrel {

int shownRotation(int degrees)
{
    // Within one turn first, so nothing below can overflow.
    const int withinTurn = ((degrees % 360) + 360) % 360;
    const int quarters = (withinTurn + 45) / 90;
    return (quarters % 4) * 90;
}

int rotationTurnedRight(int degrees) { return shownRotation(shownRotation(degrees) + 90); }

}  // namespace wendrel
