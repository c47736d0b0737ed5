#include "AudioEncodings.h"

#include "media/ffmpeg/StreamEncoder.h"

namespace wendrel::media {

namespace {

// FLAC's level 5: the reference encoder's default. Higher levels take two to three times as
// long for files one or two percent smaller; lower ones lose more than they gain.
constexpr const char* flacCompressionLevel = "5";

// `input`, or 7.1 when the container holds fewer channels than it has (the pipe's resampler
// mixes them down).
AVChannelLayout heldLayout(AudioContainer container, const AVChannelLayout& input)
{
    const std::optional<int> limit = channelLimit(container);
    if (limit && input.nb_channels > *limit)
        return AV_CHANNEL_LAYOUT_7POINT1;
    return input;
}

}  // namespace

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
        encoding.layout = heldLayout(container, frames.layout);
        return encoding;
    case AudioContainer::flac: {
        encoding.codec = findEncoder(AV_CODEC_ID_FLAC);
        const int bits = flacBits(depth);
        encoding.sampleFormat = bits == 16 ? AV_SAMPLE_FMT_S16 : AV_SAMPLE_FMT_S32;
        encoding.bitsPerRawSample = bits == 16 ? 0 : bits;
        encoding.options = {{"compression_level", flacCompressionLevel}};
        encoding.layout = heldLayout(container, frames.layout);
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
