#include "MovieMetadata.h"

#include "media/ffmpeg/MediaOutput.h"

extern "C" {
#include <libavutil/avstring.h>
}

#include <cstring>

namespace wendrel::media {

namespace {

bool describesOldFile(const char* key)
{
    for (const char* dropped : {"encoder", "major_brand", "minor_version", "compatible_brands"}) {
        if (av_strcasecmp(key, dropped) == 0)
            return true;
    }
    return false;
}

}  // namespace

void copyContainerTags(const AVDictionary* from, AVDictionary** to)
{
    const AVDictionaryEntry* entry = nullptr;
    while ((entry = av_dict_get(from, "", entry, AV_DICT_IGNORE_SUFFIX))) {
        if (!describesOldFile(entry->key))
            av_dict_set(to, entry->key, entry->value, 0);
    }
    const AVDictionaryEntry* phoneLocation = av_dict_get(from, phoneLocationKey, nullptr, 0);
    if (phoneLocation && !av_dict_get(*to, locationKey, nullptr, 0))
        av_dict_set(to, locationKey, phoneLocation->value, 0);
}

bool hasQuickTimeKeys(const AVDictionary* tags)
{
    return av_dict_get(tags, "com.apple.quicktime.", nullptr, AV_DICT_IGNORE_SUFFIX) != nullptr;
}

void copyStreamTags(const AVStream& from, AVStream& to)
{
    const AVDictionaryEntry* entry = nullptr;
    while ((entry = av_dict_get(from.metadata, "", entry, AV_DICT_IGNORE_SUFFIX))) {
        if (!describesOldFile(entry->key))
            av_dict_set(&to.metadata, entry->key, entry->value, 0);
    }
}

void copyPictureSideData(const AVStream& from, AVStream& to, bool copied)
{
    for (int i = 0; i < from.nb_side_data; ++i) {
        const AVPacketSideData& data = from.side_data[i];
        const bool keptWhenEncoded = data.type == AV_PKT_DATA_DISPLAYMATRIX || data.type == AV_PKT_DATA_STEREO3D ||
                                     data.type == AV_PKT_DATA_SPHERICAL;
        if (!copied && !keptWhenEncoded)
            continue;
        uint8_t* copy = av_stream_new_side_data(&to, data.type, data.size);
        if (!copy)
            throw std::bad_alloc();
        std::memcpy(copy, data.data, data.size);
    }
}

void writeMovieHeader(MediaOutput& output, const AVFormatContext& input, bool quickTimeKeys)
{
    copyContainerTags(input.metadata, &output.format().metadata);
    // Muxers outside the QuickTime family don't know the option and leave it unused.
    const bool keepKeys = quickTimeKeys && hasQuickTimeKeys(input.metadata);
    output.writeHeader({{"movflags", keepKeys ? "+faststart+use_metadata_tags" : "+faststart"}});
}

}  // namespace wendrel::media
