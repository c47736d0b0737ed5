#pragma once

#include <QColor>
#include <QPalette>

namespace wendrel {

// The ring's colours, light or dark after the desktop's palette.
struct RingTheme {
    bool dark = false;
    QColor ring;         // the band of segments
    QColor centre;       // the disc in the middle
    QColor edge;         // hairlines between segments and around the ring
    QColor text;
    QColor secondaryText;
    QColor accent;       // the hovered segment, progress
    QColor onAccent;     // text and icons on the accent
    QColor success;
    QColor failure;

    static RingTheme from(const QPalette& palette);
};

}  // namespace wendrel
