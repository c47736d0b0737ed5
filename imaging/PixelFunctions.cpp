#include "PixelFunctions.h"

#include "ImageWriter.h"

#include <algorithm>
#include <cmath>

namespace wendrel {

using vips::VImage;

QSize fittedSize(QSize size, int limit)
{
    const int longest = std::max(size.width(), size.height());
    if (limit >= longest)
        return size;
    const double scale = double(limit) / longest;
    return {std::max(1, int(std::lround(scale * size.width()))),
            std::max(1, int(std::lround(scale * size.height())))};
}

QSize halfSize(QSize size) { return {std::max(1, size.width() / 2), std::max(1, size.height() / 2)}; }

SquareCrop centredSquare(QSize size)
{
    const int side = std::min(size.width(), size.height());
    return {(size.width() - side) / 2, (size.height() - side) / 2, side};
}

VImage resizedTo(const VImage& image, QSize size)
{
    const int width = std::max(1, size.width());
    const int height = std::max(1, size.height());
    if (width == image.width() && height == image.height())
        return image;
    const bool alpha = image.has_alpha();
    VImage working = alpha ? image.premultiply() : image;
    working = working.resize(double(width) / image.width(),
                             VImage::option()->set("vscale", double(height) / image.height()));
    // The resampler rounds the output size its own way; settle it to the exact size.
    if (working.width() != width || working.height() != height) {
        working = working.embed(0, 0, std::max(width, working.width()), std::max(height, working.height()),
                                VImage::option()->set("extend", VIPS_EXTEND_COPY))
                      .crop(0, 0, width, height);
    }
    if (alpha)
        working = working.unpremultiply();
    return working.cast(VIPS_FORMAT_UCHAR).copy(VImage::option()->set("interpretation", image.interpretation()));
}

VImage rotatedRight(const VImage& image) { return image.rot(VIPS_ANGLE_D90); }

VImage rotatedLeft(const VImage& image) { return image.rot(VIPS_ANGLE_D270); }

VImage mirrored(const VImage& image) { return image.flip(VIPS_DIRECTION_HORIZONTAL); }

VImage croppedSquare(const VImage& image)
{
    const SquareCrop square = centredSquare({image.width(), image.height()});
    return image.crop(square.left, square.top, square.side, square.side);
}

VImage blackAndWhite(const VImage& image)
{
    return flattenOntoWhite(image).colourspace(VIPS_INTERPRETATION_B_W).cast(VIPS_FORMAT_UCHAR);
}

}  // namespace wendrel
