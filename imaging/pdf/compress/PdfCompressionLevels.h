#pragma once

#include "operations/settings/QualityLevel.h"

#include <QtGlobal>

#include <array>
#include <functional>
#include <span>

namespace wendrel {

// How hard one pass of PDF compression works: pictures are stored at `pixelsPerInch` of the
// size they are drawn at, as JPEG at `quality` (0 to 1).
struct PdfCompressionLevel {
    double quality = 0.65;
    int pixelsPerInch = 150;

    friend bool operator==(const PdfCompressionLevel&, const PdfCompressionLevel&) = default;
};

// The level each quality setting stands for.
PdfCompressionLevel pdfCompressionLevel(QualityLevel quality);

// The levels a file-size target tries, strongest last: the first that fits is taken.
inline constexpr std::array<PdfCompressionLevel, 5> pdfTargetSizeLadder{{
    {0.8, 200},
    {0.65, 150},
    {0.5, 110},
    {0.35, 80},
    {0.25, 60},
}};

// The byte size a target of `megabytes` (of 1,000,000 bytes) stands for: whole bytes, rounded
// down; nothing below zero.
qint64 pdfTargetBytes(double megabytes);

// Which of `ladder`'s levels a file-size target takes, given what compressing at a level
// weighs in bytes: the levels are tried in order and the first whose result is at most
// `targetBytes` is taken at once; when none fits, the one that came out smallest (the earlier
// of equals). `compressedSize` is called once per level tried, never for a level after the one
// taken, and whatever it throws ends the choice. The ladder must not be empty.
std::size_t chooseLadderLevel(std::span<const PdfCompressionLevel> ladder, qint64 targetBytes,
                              const std::function<qint64(const PdfCompressionLevel&)>& compressedSize);

}  // namespace wendrel
