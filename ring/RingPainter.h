#pragma once

#include "RingTheme.h"

#include <QPointF>

class QPainter;

namespace wendrel {

class RingModel;

// Draws the ring for the model's state onto a 544 x 544 area: the segments with their icons
// and titles, the hovered one highlighted, the children of an open group on their arc, and a
// centre that tells what is going on (the ring and page, a job's progress, its outcome, or
// that nothing fits).
class RingPainter {
public:
    RingPainter(const RingModel& model, const RingTheme& theme, qreal devicePixelRatio);

    void paint(QPainter& painter) const;

    // Screen position of a point on the ring, from its angle (clockwise from straight up)
    // and its distance from the centre.
    static QPointF pointAt(double angle, double radius);

private:
    void paintShadow(QPainter& painter) const;
    void paintSegments(QPainter& painter) const;
    void paintChildren(QPainter& painter) const;
    void paintCentre(QPainter& painter) const;

    const RingModel& m_model;
    const RingTheme& m_theme;
    qreal m_ratio;
};

}  // namespace wendrel
