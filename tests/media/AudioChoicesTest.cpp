#include "media/audio/AudioFormatChoice.h"
#include "media/audio/SampleMath.h"
#include "operations/FileNames.h"
#include "support/TestEnvironment.h"

#include <gtest/gtest.h>

#include <limits>
#include <vector>

using namespace wendrel;
using namespace wendrel::media;
using Kind = SampleDepth::Kind;
using Depth = FormatSettings::BitDepth;

// What the end-to-end tables don't reach: peaks that aren't a positive number, names of other
// containers, rates AAC doesn't take, the encoder's bit-rate limits, 8- and 32-bit sources, CAF,
// float asked of AIFF.
TEST(AudioChoicesTest, RulesBeyondTheEndToEndTables)
{
    for (const float peak : {-0.5f, std::numeric_limits<float>::quiet_NaN(), std::numeric_limits<float>::infinity()})
        EXPECT_EQ(normalizationGain(peak), std::nullopt) << peak;
    EXPECT_FLOAT_EQ(*normalizationGain(2.0f), 0.44562545f);
    for (const auto& [source, name] : {std::pair{"/a/Loop.aif", "Loop Normalized.aif"}, {"/a/Voice.ogg", "Voice Normalized.m4a"},
                                       {"/a/noext", "noext Normalized.m4a"}}) {
        const QString extension = normalizedExtension(QString::fromUtf8(source));
        EXPECT_EQ(outputName(QString::fromUtf8(source), QStringLiteral("Normalized"), extension), QString::fromUtf8(name));
        EXPECT_TRUE(containerForExtension(extension)) << source;
    }
    const struct {
        int source, aac, render;
    } rates[] = {{88200, 48000, 48000}, {8000, 8000, 8000}, {37800, 32000, 37800}, {46000, 44100, 46000}, {6000, 7350, 6000}};
    for (const auto& row : rates) {
        EXPECT_EQ(aacSampleRate(row.source), row.aac) << row.source;
        EXPECT_EQ(normalizedRenderRate(row.source), row.render) << row.source;
    }
    EXPECT_EQ(aacBitRate(0), 32000);
    EXPECT_EQ(aacBitRate(100000), 512000);
    EXPECT_STREQ(aacCoder(aacBitRate(256)), "fast");
    EXPECT_STREQ(aacCoder(aacBitRate(96)), "twoloop");

    const SampleDepth s8{Kind::integer, 8}, s24{Kind::integer, 24}, s32{Kind::integer, 32};
    EXPECT_EQ(sourceDepth(AV_CODEC_ID_PCM_U8, AV_SAMPLE_FMT_U8, 0), s8);
    EXPECT_EQ(flacBits(s8), 16);
    const struct {
        AudioContainer container;
        Depth setting;
        SampleDepth source;
        PcmEncoding pcm;
    } rows[] = {
        {AudioContainer::wav, Depth::matchSource, s8, {AV_CODEC_ID_PCM_S16LE, AV_SAMPLE_FMT_S16, 0}},
        {AudioContainer::wav, Depth::matchSource, s32, {AV_CODEC_ID_PCM_S32LE, AV_SAMPLE_FMT_S32, 0}},
        {AudioContainer::aiff, Depth::float32, s24, {AV_CODEC_ID_PCM_S32BE, AV_SAMPLE_FMT_S32, 0}},
        {AudioContainer::caf, Depth::float32, s24, {AV_CODEC_ID_PCM_F32BE, AV_SAMPLE_FMT_FLT, 0}},
    };
    for (const auto& row : rows)
        EXPECT_EQ(pcmEncoding(row.container, row.setting, row.source), row.pcm) << int(row.setting);
}

// The peak of a frame reads every format as float would, without converting it.
TEST(AudioChoicesTest, FramePeakOfEveryLayout)
{
    const auto peakOf = [](AVSampleFormat format, int channels, const std::vector<uint8_t>& bytes) {
        AVFrame frame{};
        frame.format = format;
        av_channel_layout_default(&frame.ch_layout, channels);
        const int planes = av_sample_fmt_is_planar(format) ? channels : 1;
        const int bytesPerSample = av_get_bytes_per_sample(format);
        frame.nb_samples = int(bytes.size()) / bytesPerSample / channels;
        uint8_t* data[8] = {};
        for (int plane = 0; plane < planes; ++plane)
            data[plane] = const_cast<uint8_t*>(bytes.data()) + plane * (bytes.size() / planes);
        frame.extended_data = data;
        return framePeak(frame);
    };
    const auto asBytes = [](const auto& values) {
        const auto* begin = reinterpret_cast<const uint8_t*>(values.data());
        return std::vector<uint8_t>(begin, begin + values.size() * sizeof values[0]);
    };
    const float nan = std::numeric_limits<float>::quiet_NaN(), inf = std::numeric_limits<float>::infinity();
    EXPECT_EQ(peakOf(AV_SAMPLE_FMT_S16, 2, asBytes(std::vector<int16_t>{100, -32768, 5, 7})), 1.0f);
    EXPECT_EQ(peakOf(AV_SAMPLE_FMT_S16P, 2, asBytes(std::vector<int16_t>{1, 2, 16384, -3})), 0.5f);
    EXPECT_EQ(peakOf(AV_SAMPLE_FMT_S32, 1, asBytes(std::vector<int32_t>{-1073741824, 12})), 0.5f);
    EXPECT_EQ(peakOf(AV_SAMPLE_FMT_U8, 1, asBytes(std::vector<uint8_t>{128, 192, 100})), 0.5f);
    EXPECT_EQ(peakOf(AV_SAMPLE_FMT_FLTP, 2, asBytes(std::vector<float>{0.1f, nan, -0.75f, inf})), 0.75f);
    EXPECT_EQ(peakOf(AV_SAMPLE_FMT_DBL, 1, asBytes(std::vector<double>{-0.25, 0.125})), 0.25f);

    std::vector<float> samples{0.6f, -0.9f, 0.1f, nan, -inf};
    applyGain(samples.data(), samples.size(), 2.0f);
    EXPECT_EQ(samples, (std::vector<float>{1.0f, -1.0f, 0.2f, 0.0f, -1.0f}));
}
