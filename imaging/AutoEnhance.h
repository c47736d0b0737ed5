#pragma once

#include <QString>

#include <vips/vips8>

namespace wendrel {

// Where a picture's tones sit. Low-key (night scenes, dark moods) and high-key (mist, snow,
// bright minimal shots) are choices the photographer made; Auto Enhance keeps them.
enum class PictureKey { low, normal, high };

// The corrections Auto Enhance chose for one picture, all measured on the picture itself.
// Tones are corrected on CIE L* alone and colour as a shift of near-neutral colours only, so
// the hue of a coloured area never turns.
struct EnhancePlan {
    PictureKey key = PictureKey::normal;
    // Tone curve on L* (0 to 100): black and white points stretched to 0 and 100, then a
    // midtone gamma (below 1 brightens). `strength` blends the curve with leaving L* as it is,
    // which is how the change of mean lightness is held within the key's bound.
    double black = 0;
    double white = 100;
    double gamma = 1;
    double strength = 1;
    // A colour cast, in a*b* units, taken out of the near-neutral colours; zero for none.
    double castA = 0;
    double castB = 0;
    // Chroma multiplier for dull pictures; scales a* and b* together, so hue stays.
    double chroma = 1;

    bool changesNothing() const;
};

// Measures a picture and decides its correction: the key from the lightness histogram; levels
// to the darkest and brightest real content and midtones toward a natural brightness, both
// held to a small change of mean lightness for low-key and high-key pictures; a colour cast
// removed from near-neutral colours only when the picture's black and white lean the same
// way, with bounded strength; colour lifted a little where it is dull. A picture that already uses the full range with natural
// midtones and no cast gets a plan that changes nothing.
EnhancePlan planEnhancement(const vips::VImage& picture);

// Applies a plan; alpha is kept as it is, and so are the picture's bands and sample format.
vips::VImage applyEnhancement(const vips::VImage& picture, const EnhancePlan& plan);

// The whole of Auto Enhance for one picture read from `path`. The result is computed before it
// returns, so every libvips failure surfaces here, as an OperationError naming the file.
vips::VImage autoEnhanced(const vips::VImage& picture, const QString& path);

}  // namespace wendrel
