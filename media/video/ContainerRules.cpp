#include "ContainerRules.h"

extern "C" {
#include <libavutil/macros.h>
}

#include <algorithm>
#include <array>

namespace wendrel::media {

namespace {

// What MP4 players handle: the picture and sound codecs phones, browsers and TVs decode.
constexpr std::array mp4Codecs{
    AV_CODEC_ID_H264, AV_CODEC_ID_HEVC, AV_CODEC_ID_MPEG4, AV_CODEC_ID_AV1, AV_CODEC_ID_VP9,
    AV_CODEC_ID_AAC,  AV_CODEC_ID_MP3,  AV_CODEC_ID_ALAC,  AV_CODEC_ID_AC3, AV_CODEC_ID_EAC3,
};

// QuickTime adds the editing codecs and uncompressed sound; AV1 and VP9 have no QuickTime
// sample entry.
constexpr std::array movCodecs{
    AV_CODEC_ID_H264,      AV_CODEC_ID_HEVC,      AV_CODEC_ID_MPEG4,     AV_CODEC_ID_PRORES,
    AV_CODEC_ID_MJPEG,     AV_CODEC_ID_DNXHD,     AV_CODEC_ID_AAC,       AV_CODEC_ID_MP3,
    AV_CODEC_ID_ALAC,      AV_CODEC_ID_AC3,       AV_CODEC_ID_EAC3,      AV_CODEC_ID_PCM_S16LE,
    AV_CODEC_ID_PCM_S16BE, AV_CODEC_ID_PCM_S24LE, AV_CODEC_ID_PCM_S24BE, AV_CODEC_ID_PCM_S32LE,
    AV_CODEC_ID_PCM_S32BE, AV_CODEC_ID_PCM_F32LE, AV_CODEC_ID_PCM_F32BE,
};

template <typename List>
bool listed(const List& list, AVCodecID codec)
{
    return std::find(list.begin(), list.end(), codec) != list.end();
}

}  // namespace

bool containerTakes(MovieContainer container, AVCodecID codec)
{
    return container == MovieContainer::mp4 ? listed(mp4Codecs, codec) : listed(movCodecs, codec);
}

const char* muxerName(MovieContainer container) { return container == MovieContainer::mp4 ? "mp4" : "mov"; }

const char* extensionOf(MovieContainer container) { return container == MovieContainer::mp4 ? "mp4" : "mov"; }

uint32_t sampleEntryTag(AVCodecID codec) { return codec == AV_CODEC_ID_HEVC ? MKTAG('h', 'v', 'c', '1') : 0; }

}  // namespace wendrel::media
