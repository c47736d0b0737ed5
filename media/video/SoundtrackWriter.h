#pragma once

#include <QString>

#include <functional>

namespace wendrel {
class OperationContext;
}

namespace wendrel::media {

// Writes the first sound stream of the movie `source` to `destination` as M4A: AAC goes across
// packet for packet, anything else is encoded as AAC at `bitsPerSecond`. The movie's tags
// (title, date) go with it. Throws "No audio in this file" when it has no sound.
void writeSoundtrack(const QString& source, const QString& destination, int bitsPerSecond,
                     const OperationContext& context, const std::function<void(double)>& progress);

}  // namespace wendrel::media
