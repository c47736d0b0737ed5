#pragma once

#include "operations/settings/CompressionSettings.h"

#include <QByteArray>

#include <cmath>

#include <functional>
#include <optional>

namespace wendrel {

// The picture being compressed, as the search sees it: it can be encoded at a quality from
// 0 to 1 (nothing when the encoder fails), and shrunk to three quarters of each side.
// `setting` is what the encoder makes of a quality (a whole percentage for JPEG): qualities
// with the same setting give the same bytes, and a higher setting never gives fewer bytes.
struct SearchablePicture {
    std::function<std::optional<QByteArray>(double quality)> encode;
    std::function<void()> shrinkToThreeQuarters;
    std::function<int(double quality)> setting = [](double quality) { return int(std::lround(quality * 100)); };
};

struct CompressionResult {
    QByteArray bytes;
    double quality = 0;
    int encodes = 0;
    int shrinks = 0;
};

// The byte size the size modes aim at, never below 10,000: targetSize takes targetMB
// megabytes; reduceBy takes between 1 and 99 percent off the input's size. None for the
// quality mode.
std::optional<qint64> compressionTarget(const CompressionSettings& settings, qint64 inputBytes);

// The single quality of the quality mode: the percentage, at least 0.01 and at most 1.
double qualityModeQuality(double qualityPercent);

// The highest quality that meets `targetBytes`, at the largest scale that can meet it:
// a binary search of seven steps between 0.05 and 0.95 (first 0.5), and while none fits,
// the picture shrunk to three quarters and searched again, up to eight searches. When even
// that fails, the picture shrunk eight times is encoded at 0.05 whatever its size.
// The search returns what that binary search returns, with fewer encodes: sizes already seen
// answer its questions where they can (a setting no larger than one that fitted fits too), and
// where they can't, the next encode goes where the sizes seen so far put the target, which
// usually settles a search in two to five encodes instead of seven (at most nine when flat
// runs in the sizes mislead every estimate).
// A failing encoder ends a search early. Returns nothing when the final encode fails.
std::optional<CompressionResult> searchForSize(SearchablePicture& picture, qint64 targetBytes);

}  // namespace wendrel
