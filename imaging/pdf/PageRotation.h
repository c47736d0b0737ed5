#pragma once

namespace wendrel {

// A page's /Rotate as readers show it: 0, 90, 180 or 270 degrees clockwise. Any whole number
// counts modulo a full turn (-90 is 270, 450 is 90). Readers only draw quarter turns, so a
// value between two of them snaps to the nearest one, a tie going clockwise (44 is 0, 45 is 90):
// what a person saw on screen is what the next turn starts from.
int shownRotation(int degrees);

// The rotation after turning a page a quarter clockwise from `degrees`: 270 gives 0, 45 gives 180.
int rotationTurnedRight(int degrees);

}  // namespace wendrel
