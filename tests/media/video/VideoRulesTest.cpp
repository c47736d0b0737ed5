#include "media/video/ContainerRules.h"
#include "media/video/MovieMetadata.h"
#include "media/video/PictureSize.h"
#include "media/video/StreamTimestamps.h"
#include "media/video/VideoChoices.h"

#include <gtest/gtest.h>

using namespace wendrel;
using namespace wendrel::media;

TEST(VideoRulesTest, EncodedSizeLimitsTheDisplayedHeight)
{
    const struct {
        PictureSize stored;
        AVRational aspect;
        int turns;
        int maxHeight;
        PictureSize expected;
        bool exceeds;
    } rows[] = {  // beyond the end-to-end runs' 320 x 180 and 640 x 360 turned to 240 high
        {{1920, 1080}, {1, 1}, 0, 2160, {1920, 1080}, false},  // never upscales
        {{1920, 1080}, {0, 1}, 1, 1280, {1280, 720}, true},    // a portrait phone clip: its width is its height
        {{1920, 1080}, {1, 1}, 3, 1920, {1920, 1080}, false},
        {{1920, 1080}, {1, 1}, 2, 1080, {1920, 1080}, false},  // upside down is still landscape
        {{720, 480}, {32, 27}, 1, 480, {404, 270}, true},      // wide pixels: 720 stored are 853 shown
        {{321, 241}, {1, 1}, 0, 0, {320, 240}, false},         // odd sides become even
        {{4, 3}, {1, 1}, 0, 1, {2, 2}, true},                  // never below one 4:2:0 block
    };
    for (const auto& row : rows) {
        EXPECT_EQ(encodedSize(row.stored, row.aspect, row.turns, row.maxHeight), row.expected)
            << row.stored.width << "x" << row.stored.height << " turns " << row.turns << " max " << row.maxHeight;
        EXPECT_EQ(exceedsHeight(row.stored, row.aspect, row.turns, row.maxHeight), row.exceeds);
    }
}

TEST(VideoRulesTest, ContainersTakeWhatTheirPlayersRead)
{
    const struct {
        AVCodecID codec;
        bool mp4;
        bool mov;
    } rows[] = {  // beyond what the end-to-end runs copy or re-encode (H.264, MJPEG, AAC, PCM)
        {AV_CODEC_ID_HEVC, true, true},   {AV_CODEC_ID_MPEG4, true, true}, {AV_CODEC_ID_AV1, true, false},
        {AV_CODEC_ID_PRORES, false, true}, {AV_CODEC_ID_MP3, true, true},  {AV_CODEC_ID_AC3, true, true},
        {AV_CODEC_ID_OPUS, false, false}, {AV_CODEC_ID_VP8, false, false}, {AV_CODEC_ID_VORBIS, false, false},
        {AV_CODEC_ID_FLAC, false, false},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(containerTakes(MovieContainer::mp4, row.codec), row.mp4) << avcodec_get_name(row.codec);
        EXPECT_EQ(containerTakes(MovieContainer::mov, row.codec), row.mov) << avcodec_get_name(row.codec);
    }
}

TEST(VideoRulesTest, CopiedTimesStartAtZeroAndOnlyGrow)
{
    constexpr int64_t none = INT64_MIN;
    CopiedTimestamps times(1000);
    const struct {
        int64_t pts, dts, duration;
        int64_t expectedPts, expectedDts;
    } rows[] = {
        {1000, 1000, 10, 0, 0},
        {1040, 1010, 10, 40, 10},   // reordered pictures keep their presentation time
        {none, none, 10, 20, 20},   // nothing known: one duration on
        {1020, 1020, 10, 21, 21},   // a repeated time is pushed past the last one
        {none, 1050, 10, 50, 50},   // shown when decoded
        {1040, 1060, 10, 60, 60},   // never shown before it is decoded
    };
    for (const auto& row : rows) {
        const auto result = times.next(row.pts, row.dts, row.duration, none);
        EXPECT_EQ(result.pts, row.expectedPts) << row.pts << "/" << row.dts;
        EXPECT_EQ(result.dts, row.expectedDts) << row.pts << "/" << row.dts;
    }

    FrameTimestamps frames(100, 3);
    const struct {
        int64_t pts;
        std::optional<int64_t> expected;
    } frameRows[] = {{100, 0}, {110, 10}, {110, std::nullopt}, {105, std::nullopt}, {none, 13}, {200, 100}};
    for (const auto& row : frameRows)
        EXPECT_EQ(frames.next(row.pts, none), row.expected) << row.pts;
}

TEST(VideoRulesTest, SettingsChooseTheEncoding)
{
    using Quality = FormatSettings::VideoQuality;
    for (const auto& [quality, crf] : {std::pair{Quality::maximum, 18}, {Quality::balanced, 23}, {Quality::smaller, 28}}) {
        const MovieEncoding encoding = conversionEncoding({.audioBitrate = 192, .videoQuality = quality, .videoMaxHeight = 720},
                                                          MovieContainer::mov);
        EXPECT_EQ(encoding.crf, crf);
        EXPECT_EQ(encoding.maxHeight, 720);
        EXPECT_EQ(encoding.audioBitsPerSecond, 192000);
    }
}

TEST(VideoRulesTest, ContainerTagsLeaveTheOldFilesDetailsBehind)
{
    AVDictionary* source = nullptr;
    av_dict_set(&source, "encoder", "Lavf58", 0);
    av_dict_set(&source, "major_brand", "qt  ", 0);
    av_dict_set(&source, phoneLocationKey, "+48.8584+002.2945/", 0);
    AVDictionary* copied = nullptr;
    copyContainerTags(source, &copied);
    EXPECT_STREQ(av_dict_get(copied, phoneLocationKey, nullptr, 0)->value, "+48.8584+002.2945/");
    EXPECT_EQ(av_dict_get(copied, "encoder", nullptr, 0), nullptr);
    EXPECT_EQ(av_dict_get(copied, "major_brand", nullptr, 0), nullptr);
    EXPECT_TRUE(hasQuickTimeKeys(copied));
    av_dict_free(&source);
    av_dict_free(&copied);
}
