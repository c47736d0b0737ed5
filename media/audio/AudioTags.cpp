#include "AudioTags.h"

#include <array>

namespace wendrel::media {

void copyAudioTags(const AVFormatContext& source, const AVStream& audio, AVDictionary** destination)
{
    // FFmpeg's demuxers name tags the same whatever the container (ID3 TIT2, the M4A ©nam
    // atom and a Vorbis TITLE all read as "title"); lookups ignore case.
    static constexpr std::array keys{"title", "artist", "album", "album_artist", "track", "disc",
                                     "date", "genre", "composer", "comment"};
    for (const char* key : keys) {
        const AVDictionaryEntry* entry = av_dict_get(source.metadata, key, nullptr, 0);
        if (!entry)
            entry = av_dict_get(audio.metadata, key, nullptr, 0);
        if (entry && entry->value[0] != '\0')
            av_dict_set(destination, key, entry->value, 0);
    }
}

const AVStream* carriableCoverArt(const AVFormatContext& source)
{
    for (unsigned i = 0; i < source.nb_streams; ++i) {
        const AVStream* stream = source.streams[i];
        if (!(stream->disposition & AV_DISPOSITION_ATTACHED_PIC) || stream->attached_pic.size <= 0)
            continue;
        const AVCodecID codec = stream->codecpar->codec_id;
        if (codec == AV_CODEC_ID_MJPEG || codec == AV_CODEC_ID_PNG)
            return stream;
    }
    return nullptr;
}

}  // namespace wendrel::media
