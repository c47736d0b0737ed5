#pragma once

#include "operations/ContentType.h"
#include "operations/settings/FormatSettings.h"

#include <QList>
#include <QString>

#include <optional>

namespace wendrel {

// The raster formats Wendrel writes.
enum class ImageFormat { jpeg, png, heic, webp, avif, tiff, bmp, gif, jxl };

// One output format of the convert ring.
struct ImageTarget {
    ImageFormat format;
    QString name;       // the entry's title: "WebP"
    QString extension;  // "webp"
    bool lossy;         // whether the quality setting applies
};

// Every target in ring order: the eight classic formats, then JPEG XL.
const QList<ImageTarget>& imageTargets();

const ImageTarget& imageTarget(ImageFormat format);

ContentType contentType(ImageFormat format);

// The format a content type stands for, if Wendrel writes it.
std::optional<ImageFormat> imageFormatFor(const ContentType& type);

// Whether this build can really encode the format: found by encoding a tiny picture, so a
// missing codec plugin hides the entry instead of failing every file. Probed once per set of
// installed libraries and remembered in the user's cache folder.
bool canWrite(ImageFormat format);

// The quality an "imageQuality" setting stands for: 0.72, 0.86 or 0.95.
double lossyQuality(const FormatSettings& settings);

}  // namespace wendrel
