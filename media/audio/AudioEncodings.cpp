#include "AudioEncodings.h"

#include "media/ffmpeg/StreamEncoder.h"

namespace wendrel::media {

namespace {

// FLAC's level 5: the reference encoder's default. Higher levels take two to three times as
// long for files one or two percent smaller; lower ones lose more than they gain.
constexpr const char* flacCompressionLevel = "5";

}  // namespace

AVChannelLayout encoderLayout(const AVCodec& codec, const AVChannelLayout& input)
{
    if (!codec.ch_layouts)
        return input;
    const AVChannelLayout* sameCount = nullptr;
    for (const AVChannelLayout* layout = codec.ch_layouts; layout->nb_channels > 0; ++layout) {
        if (av_channel_layout_compare(layout, &input) == 0)
            return input;
        if (!sameCount && layout->nb_channels == input.nb_channels)
            sameCount = layout;
    }
    if (sameCount)
        return *sameCount;
    return input.nb_channels == 1 ? AVChannelLayout(AV_CHANNEL_LAYOUT_MONO) : AVChannelLayout(AV_CHANNEL_LAYOUT_STEREO);
}

AudioEncoding audioEncoding(AudioContainer container, const FormatSettings& settings, const AudioShape& frames,
                            SampleDepth depth)
{
    AudioEncoding encoding;
    switch (container) {
    case AudioContainer::m4a:
        encoding.codec = findEncoder(AV_CODEC_ID_AAC);
        encoding.sampleRate = aacSampleRate(frames.sampleRate);
        encoding.bitRate = aacBitRate(settings.audioBitrate);
        encoding.options = {{"aac_coder", aacCoder(int(encoding.bitRate))}};
        if (encoding.codec)
            encoding.layout = encoderLayout(*encoding.codec, frames.layout);
        return encoding;
    case AudioContainer::flac: {
        encoding.codec = findEncoder(AV_CODEC_ID_FLAC);
        const int bits = flacBits(depth);
        encoding.sampleFormat = bits == 16 ? AV_SAMPLE_FMT_S16 : AV_SAMPLE_FMT_S32;
        encoding.bitsPerRawSample = bits == 16 ? 0 : bits;
        encoding.options = {{"compression_level", flacCompressionLevel}};
        return encoding;
    }
    case AudioContainer::wav:
    case AudioContainer::aiff:
    case AudioContainer::caf:
        break;
    }
    const PcmEncoding pcm = pcmEncoding(container, settings.bitDepth, depth);
    encoding.codec = findEncoder(pcm.codec);
    encoding.sampleFormat = pcm.sampleFormat;
    encoding.bitsPerRawSample = pcm.bitsPerRawSample;
    return encoding;
}

}  // namespace wendrel::media
