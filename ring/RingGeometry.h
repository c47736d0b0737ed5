#pragma once

#include <optional>

namespace wendrel::RingGeometry {

// The ring's measurements, in logical pixels.
inline constexpr double panelSize = 544;
inline constexpr double innerRadius = 66;    // the centre disc ends here
inline constexpr double outerRadius = 198;   // the segments end here
inline constexpr double childReach = 290;    // the children arc answers up to here
inline constexpr double childRadius = 236;   // where the children are drawn
inline constexpr int pageSize = 10;

// Angles are measured from straight up, growing clockwise, in radians: an offset (dx, dy)
// has dx growing to the right and dy growing upward, so (0, 1) is angle 0 and (1, 0) a
// quarter turn. Segment 0 is centred straight up and the others follow clockwise.
double pointerAngle(double dx, double dy);

// The angle a segment is centred on, for `count` segments.
double segmentAngle(int index, int count);

// The width a segment's title may take, centred `radius` from the centre: the segment's chord
// there less a small gap, at most `widest`. One segment spans the whole ring, so its title gets
// the widest line rather than the chord of a full turn, which is none: any segment spanning
// half the ring or more is at least a diameter wide.
double labelWidth(int count, double radius, double widest);

// The segment under an offset from the centre: only the band between the centre disc and
// the outer edge (both edges excluded) hits, each segment spanning half a step either side of
// its centre.
std::optional<int> segmentAt(double dx, double dy, int count);

// The second level of an open group: its children side by side on an arc centred on the
// group segment's angle, `step` apart, with `margin` of slack beyond the ends.
struct ChildArc {
    double centreAngle = 0;
    double step = 0;
    double margin = 0;
    int count = 0;

    // The angle a child is centred on.
    double childAngle(int index) const;
};

// 40 degrees per child with 20 degrees of slack; more children than fit in 300 degrees share
// that span instead, with half a step of slack.
ChildArc childArc(int groupIndex, int segmentCount, int childCount);

// The child under an offset from the centre, anywhere closer than the arc's reach.
std::optional<int> childAt(double dx, double dy, const ChildArc& arc);

}  // namespace wendrel::RingGeometry
