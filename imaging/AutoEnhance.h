#pragma once

#include <QString>

#include <vips/vips8>

namespace wendrel {

// The corrections Auto Enhance chose for one picture, all measured on the picture itself.
struct EnhancePlan {
    double gain[3] = {1, 1, 1};    // per channel, after the black point: levels and colour balance
    double black[3] = {0, 0, 0};   // per channel black point, 0 to 255
    double gamma = 1;              // midtone brightness: below 1 brightens
    double saturation = 1;         // chroma multiplier
};

// Measures a picture and decides its correction: levels stretched to the darkest and
// brightest real content of each channel (which also removes a colour cast), midtones moved
// toward a natural brightness, and colour lifted where it is dull. Every correction is held
// within limits and shrinks to nothing for a picture that already uses the full range, is
// neutral and well exposed, so a good photo comes back nearly as it was.
EnhancePlan planEnhancement(const vips::VImage& picture);

// Applies a plan; alpha is kept as it is.
vips::VImage applyEnhancement(const vips::VImage& picture, const EnhancePlan& plan);

// The whole of Auto Enhance for one picture read from `path`. The result is computed before it
// returns, so every libvips failure surfaces here, as an OperationError naming the file.
vips::VImage autoEnhanced(const vips::VImage& picture, const QString& path);

}  // namespace wendrel
