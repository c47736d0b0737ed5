#pragma once

#include <QString>
#include <QtGlobal>

#include <optional>

class QIODevice;

namespace wendrel {

// Ancillary chunks (text, profiles, EXIF) larger than this are not believed: real ones stay
// far below, and the decoder would allocate whatever a chunk claims before reading it.
inline constexpr qint64 largestPngSideChunk = 64 * 1024 * 1024;

// Walks a PNG's chunk headers without reading their contents: what is wrong with the file's
// structure, or nothing when it is sound (or is not a PNG at all). A chunk that claims more
// bytes than the file holds, more than PNG allows, or a side chunk beyond `largestSideChunk`
// is a fault. Reads 12 bytes a chunk, so a 100 MB picture costs a few thousand small reads.
std::optional<QString> pngStructureProblem(QIODevice& file, qint64 largestSideChunk = largestPngSideChunk);

}  // namespace wendrel
