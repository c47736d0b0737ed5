#include "BackgroundCard.h"

#include "PixelFunctions.h"
#include "operations/Logging.h"

#include <QByteArray>
#include <QString>

#include <algorithm>
#include <cmath>

namespace wendrel {

namespace {

using vips::VImage;

const std::vector<double> gradientStart{0.36 * 255, 0.42 * 255, 0.98 * 255};
const std::vector<double> gradientEnd{0.87 * 255, 0.36 * 255, 0.84 * 255};
constexpr double shadowOpacity = 0.45;

// The gradient runs from the bottom-left corner to the top-right one: each pixel takes the
// colour of its projection onto that diagonal.
VImage diagonalGradient(QSize canvas)
{
    const double width = canvas.width();
    const double height = canvas.height();
    const VImage xy = VImage::xyz(canvas.width(), canvas.height());
    const VImage along = (xy[0] * width + (height - xy[1]) * height) / (width * width + height * height);
    std::vector<double> span(3);
    for (size_t band = 0; band < 3; ++band)
        span[band] = gradientEnd[band] - gradientStart[band];
    return along.linear(span, gradientStart)
        .cast(VIPS_FORMAT_UCHAR)
        .copy(VImage::option()->set("interpretation", VIPS_INTERPRETATION_sRGB));
}

// An anti-aliased rounded rectangle as an 8-bit mask of `area`'s size.
VImage roundedMask(QSize area, double x, double y, double width, double height, double radius)
{
    const QByteArray svg =
        QStringLiteral("<svg xmlns='http://www.w3.org/2000/svg' width='%1' height='%2'>"
                       "<rect x='%3' y='%4' width='%5' height='%6' rx='%7' ry='%7' fill='#fff'/></svg>")
            .arg(area.width())
            .arg(area.height())
            .arg(x)
            .arg(y)
            .arg(width)
            .arg(height)
            .arg(radius)
            .toUtf8();
    // The loader reads the buffer lazily: render it completely while the bytes are alive.
    const VImage rendered = VImage::new_from_buffer(svg.constData(), size_t(svg.size()), "");
    return rendered[rendered.bands() - 1].copy_memory();
}

// The card's shadow as an 8-bit alpha mask of the canvas: the card's shape, moved down by a
// sixth of the margin and blurred by half of it. The blur runs on a reduced copy, which
// looks the same once enlarged and keeps large screenshots fast.
VImage shadowMask(const CardLayout& layout, QSize picture)
{
    const double sigma = layout.pad * 0.5 / 2;
    const double reduction = std::max(1.0, std::floor(sigma / 4));
    const QSize small(int(std::ceil(layout.canvas.width() / reduction)),
                      int(std::ceil(layout.canvas.height() / reduction)));
    const VImage shape = roundedMask(small, layout.pad / reduction, (layout.pad + layout.pad / 6.0) / reduction,
                                     picture.width() / reduction, picture.height() / reduction,
                                     layout.radius / reduction);
    const VImage blurred = shape.gaussblur(sigma / reduction).cast(VIPS_FORMAT_UCHAR);
    return resizedTo(blurred.copy(VImage::option()->set("interpretation", VIPS_INTERPRETATION_B_W)), layout.canvas);
}

// Compositing converts every layer to sRGB first; generated layers must say that they are.
VImage withAlpha(const VImage& colour, const VImage& alpha)
{
    return colour.bandjoin(alpha).copy(VImage::option()->set("interpretation", VIPS_INTERPRETATION_sRGB));
}

}  // namespace

CardLayout cardLayout(QSize picture)
{
    const int longest = std::max(picture.width(), picture.height());
    const int pad = std::max(48, int(0.08 * longest));
    return {pad, QSize(picture.width() + 2 * pad, picture.height() + 2 * pad),
            0.02 * std::min(picture.width(), picture.height()) + 6};
}

VImage onBackgroundCard(const VImage& picture)
{
    const QSize size(picture.width(), picture.height());
    const CardLayout layout = cardLayout(size);
    try {
        const VImage colourPicture =
            picture.bands() < 3 ? picture.colourspace(VIPS_INTERPRETATION_sRGB) : picture;
        const VImage black = VImage::black(layout.canvas.width(), layout.canvas.height(),
                                           VImage::option()->set("bands", 3));
        const VImage shadow = withAlpha(black, (shadowMask(layout, size) * shadowOpacity).cast(VIPS_FORMAT_UCHAR));

        const VImage cardShape = roundedMask(size, 0, 0, size.width(), size.height(), layout.radius);
        const VImage white = VImage::black(size.width(), size.height(), VImage::option()->set("bands", 3)) + 255;
        const VImage card = withAlpha(white.cast(VIPS_FORMAT_UCHAR), cardShape);

        // The picture is clipped to the card: its own transparency and the card's corners.
        const VImage pictureAlpha = colourPicture.has_alpha()
                                        ? (colourPicture[colourPicture.bands() - 1] * cardShape / 255.0)
                                        : cardShape;
        const VImage clipped = withAlpha(colourPicture.extract_band(0, VImage::option()->set("n", 3)),
                                         pictureAlpha.cast(VIPS_FORMAT_UCHAR));

        const std::vector<VImage> layers{diagonalGradient(layout.canvas), shadow, card, clipped};
        const VImage composed = VImage::composite(
            layers, {VIPS_BLEND_MODE_OVER, VIPS_BLEND_MODE_OVER, VIPS_BLEND_MODE_OVER},
            VImage::option()
                ->set("x", std::vector<int>{0, layout.pad, layout.pad})
                ->set("y", std::vector<int>{0, layout.pad, layout.pad}));
        return composed.extract_band(0, VImage::option()->set("n", 3))
            .cast(VIPS_FORMAT_UCHAR)
            .copy(VImage::option()->set("interpretation", VIPS_INTERPRETATION_sRGB))
            .copy_memory();
    } catch (const vips::VError& error) {
        qCDebug(lcJobs) << "background failed:" << error.what();
        return picture;
    }
}

}  // namespace wendrel
