#pragma once

#include <QRectF>
#include <QSizeF>

#include <array>

class QPDFPageObjectHelper;

namespace wendrel {

// A page as a reader shows it: the part of its user space that is visible, turned by its
// /Rotate and scaled by its /UserUnit. Marks meant for "the bottom of the page" go where the
// reader sees the bottom, whatever way the page is stored.
struct PageFrame {
    QRectF box;          // the visible box in user space: x0, y0 at the lower-left corner
    int rotation = 0;    // clockwise quarter turns in degrees: 0, 90, 180 or 270
    double userUnit = 1; // points per user-space unit

    // The page's size on screen, in points, width first.
    QSizeF displayedSize() const;

    // The matrix [a b c d e f] (as PDF's `cm` takes it) that carries a point given in
    // displayed points, from the lower-left corner of the page as shown, into user space.
    std::array<double, 6> displayedToUserSpace() const;
};

// Reads the frame of a page: its crop box within its media box (each falls back as PDF says),
// its /Rotate, inherited or not, rounded to quarter turns, and its /UserUnit.
PageFrame pageFrame(QPDFPageObjectHelper& page);

}  // namespace wendrel
