#pragma once

extern "C" {
#include <libavformat/avformat.h>
}

namespace wendrel::media {

// The key phones write the place a clip was shot under, and the one the muxers write as the
// QuickTime location that players and photo libraries read.
inline constexpr const char* phoneLocationKey = "com.apple.quicktime.location.ISO6709";
inline constexpr const char* locationKey = "location";

// Copies the container's tags (title, creation date, location...) from `from` to `to`, minus
// those describing the old file that the muxer writes afresh (encoder, brands). A location
// stored only under the phone's key is also given the QuickTime key, which every muxer writes.
void copyContainerTags(const AVDictionary* from, AVDictionary** to);

// Whether the tags hold keys only a QuickTime metadata box keeps ("com.apple.quicktime.make"):
// a QuickTime result then writes that box too, so nothing a phone recorded is lost.
bool hasQuickTimeKeys(const AVDictionary* tags);

// A stream's own tags (language, creation date, handler name), without the encoder's name.
void copyStreamTags(const AVStream& from, AVStream& to);

// What tells a player how to show the picture: the rotation and, for copied streams
// (`copied`), everything else the source states about it (HDR levels, projection). A
// re-encoded 8-bit picture keeps only the rotation, stereo layout and projection.
void copyPictureSideData(const AVStream& from, AVStream& to, bool copied);

}  // namespace wendrel::media

namespace wendrel::media {

class MediaOutput;

// Gives `output` the tags of `input` and writes its header, with the index at the front so the
// result plays while it downloads. `quickTimeKeys`: the container can keep the phone's own
// keys (QuickTime can; MP4 players read titles only from the "ilst" item list, which
// writing those keys would replace).
void writeMovieHeader(MediaOutput& output, const AVFormatContext& input, bool quickTimeKeys);

}  // namespace wendrel::media
