#pragma once

#include <QSize>

#include <vips/vips8>

namespace wendrel {

// The layout of "Add Background": the margin around the picture, the canvas and the corner
// radius of the card, all from the picture's size.
struct CardLayout {
    int pad;        // 8 % of the longest side, at least 48
    QSize canvas;   // the picture plus the margin all round
    double radius;  // 2 % of the shortest side plus 6
};
CardLayout cardLayout(QSize picture);

// The picture on a white card with rounded corners and a soft shadow, on a blue-to-pink
// diagonal gradient (blue at the bottom left, pink at the top right). The result is opaque
// sRGB. Should the canvas fail to build, the picture comes back unchanged.
vips::VImage onBackgroundCard(const vips::VImage& picture);

}  // namespace wendrel
