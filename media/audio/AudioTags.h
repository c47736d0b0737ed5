#pragma once

extern "C" {
#include <libavformat/avformat.h>
}

namespace wendrel::media {

// Copies what describes the recording (title, artist, album, album artist, track, disc, date,
// genre, composer, comment) into `destination`. Tags are read from the container and from the
// audio stream, where Ogg keeps them; the container's win. The muxer writes each in its own
// way (M4A atoms, Vorbis comments, ID3, RIFF INFO) and leaves out what it has no place for.
void copyAudioTags(const AVFormatContext& source, const AVStream& audio, AVDictionary** destination);

// The source's cover picture when a result can carry it: JPEG or PNG, the kinds every
// container that holds covers takes; nullptr otherwise.
const AVStream* carriableCoverArt(const AVFormatContext& source);

}  // namespace wendrel::media
