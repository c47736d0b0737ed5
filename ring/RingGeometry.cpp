#include "RingGeometry.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace wendrel::RingGeometry {

namespace {

constexpr double fullTurn = 2 * std::numbers::pi;
constexpr double normalChildStep = 0.6981317007977318;  // 40 degrees
constexpr double normalArcMargin = 0.3490658503988659;  // 20 degrees
constexpr double widestArc = 300.0 / 360.0 * fullTurn;

// Into (-pi, pi].
double normalised(double angle)
{
    angle = std::fmod(angle, fullTurn);
    if (angle <= -std::numbers::pi)
        angle += fullTurn;
    else if (angle > std::numbers::pi)
        angle -= fullTurn;
    return angle;
}

}  // namespace

double pointerAngle(double dx, double dy)
{
    double angle = std::atan2(dx, dy);
    if (angle < 0)
        angle += fullTurn;
    return angle;
}

double segmentAngle(int index, int count) { return count > 0 ? index * fullTurn / count : 0; }

double labelWidth(int count, double radius, double widest)
{
    constexpr double gap = 6;
    const double halfSpan = std::min(std::numbers::pi / 2, std::numbers::pi / std::max(count, 1));
    return std::clamp(2 * radius * std::sin(halfSpan) - gap, 0.0, widest);
}

std::optional<int> segmentAt(double dx, double dy, int count)
{
    if (count <= 0)
        return std::nullopt;
    const double radius = std::hypot(dx, dy);
    if (!(radius > innerRadius && radius < outerRadius))
        return std::nullopt;
    const double step = fullTurn / count;
    return static_cast<int>(std::floor((pointerAngle(dx, dy) + step / 2) / step)) % count;
}

double ChildArc::childAngle(int index) const
{
    return centreAngle + (index - (count - 1) / 2.0) * step;
}

ChildArc childArc(int groupIndex, int segmentCount, int childCount)
{
    ChildArc arc;
    arc.centreAngle = segmentAngle(groupIndex, segmentCount);
    arc.count = std::max(0, childCount);
    arc.step = normalChildStep;
    arc.margin = normalArcMargin;
    if (arc.count * normalChildStep > widestArc) {
        arc.step = widestArc / arc.count;
        arc.margin = arc.step / 2;
    }
    return arc;
}

std::optional<int> childAt(double dx, double dy, const ChildArc& arc)
{
    if (arc.count <= 0 || !(std::hypot(dx, dy) < childReach))
        return std::nullopt;
    const double offset = normalised(pointerAngle(dx, dy) - arc.centreAngle);
    const double halfSpan = arc.step * arc.count / 2;
    if (std::abs(offset) > halfSpan + arc.margin)
        return std::nullopt;
    const int index = static_cast<int>(std::floor((offset + halfSpan) / arc.step));
    return std::clamp(index, 0, arc.count - 1);
}

}  // namespace wendrel::RingGeometry
