#pragma once

#include <QString>

#include <cstdint>
#include <functional>

namespace wendrel {
class OperationContext;
}

namespace wendrel::media {

enum class VideoCodec { h264, hevc };
enum class MovieContainer { mp4, mov };

// How a movie is written. Streams the container already takes are copied unchanged unless the
// picture has to shrink or `allowStreamCopy` is off; the rest is re-encoded as described here.
struct MovieEncoding {
    MovieContainer container = MovieContainer::mp4;
    VideoCodec codec = VideoCodec::h264;
    int crf = 18;                    // constant quality, used when bitsPerSecond is 0
    int64_t videoBitsPerSecond = 0;  // > 0: average bit rate (to meet a file size)
    int maxHeight = 0;               // the DISPLAYED height limit; 0: none; never upscales
    int audioBitsPerSecond = 256000; // AAC when the audio has to be encoded
    bool keepAudio = true;
    bool allowStreamCopy = true;     // false: the picture is always re-encoded
};

// What was written: the coded picture size, the file's size and which streams went across
// without re-encoding.
struct MovieResult {
    int width = 0;
    int height = 0;
    qint64 bytes = 0;
    bool videoCopied = false;
    bool audioCopied = false;
};

// Writes the first picture stream of `source` (and its first sound stream when `keepAudio`)
// to `destination`, a path in the job's scratch space, keeping the rotation, the dates, the
// location and the other tags. `progress` hears the fraction of the timeline done, 0 to 1.
// Throws OperationError with the user's sentence when the source can't be read or the result
// can't be written, OperationCancelled soon after the job is cancelled.
MovieResult writeMovie(const QString& source, const QString& destination, const MovieEncoding& encoding,
                       const OperationContext& context, const std::function<void(double)>& progress);

}  // namespace wendrel::media
