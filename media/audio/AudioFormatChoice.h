#pragma once

#include "operations/settings/FormatSettings.h"

extern "C" {
#include <libavcodec/codec_id.h>
#include <libavutil/samplefmt.h>
}

#include <QString>

#include <optional>

namespace wendrel::media {

// The containers audio results are written in.
enum class AudioContainer { m4a, wav, aiff, flac, caf };

// How precise the source's samples are, as far as a depth means anything.
struct SampleDepth {
    enum class Kind {
        integer,   // PCM and lossless codecs: `bits` significant bits
        floating,  // float samples stored as such
        none,      // lossy codecs: the decoder makes floats, no depth was kept
    };
    Kind kind = Kind::none;
    int bits = 0;

    friend bool operator==(const SampleDepth&, const SampleDepth&) = default;
};

// What the decoder and the container say about the source: the codec, the decoder's sample
// format and its meaningful bits (0 when unknown).
SampleDepth sourceDepth(AVCodecID codec, AVSampleFormat decodedFormat, int bitsPerRawSample);

// An uncompressed sample encoding: the codec, the format its encoder takes and the bits that
// count in it (24 in 32-bit samples).
struct PcmEncoding {
    AVCodecID codec = AV_CODEC_ID_NONE;
    AVSampleFormat sampleFormat = AV_SAMPLE_FMT_NONE;
    int bitsPerRawSample = 0;

    friend bool operator==(const PcmEncoding&, const PcmEncoding&) = default;
};

// The PCM a WAV, AIFF or CAF result is written in for the user's depth setting and the source.
PcmEncoding pcmEncoding(AudioContainer container, FormatSettings::BitDepth setting, SampleDepth source);

// 16 or 24: FLAC keeps 16-bit sources at 16 bits and everything deeper (and floats) at 24.
int flacBits(SampleDepth source);

// The sample rate an AAC result is written at: the source's when AAC takes it, else the nearest
// rate AAC takes, never above 48 kHz.
int aacSampleRate(int sourceRate);

// The AAC bit rate in bits per second for the stored kbit/s, kept to what the encoder does well.
int aacBitRate(int kilobitsPerSecond);

// The AAC encoder's search method for `bitRate`: "fast" from 128 kbit/s up, where it sounds at
// least as good as the two-loop search for less than half the time; "twoloop" below, where its
// perceptual tuning matters.
const char* aacCoder(int bitRate);

// The sample rate the normaliser renders at: the source's, at most 48 kHz.
int normalizedRenderRate(int sourceRate);

// The normaliser's single gain, which puts the peak at -1 dBFS; none when the peak is not
// above zero (silence) or not a number.
std::optional<float> normalizationGain(float peak);

// The level the normaliser brings the peak to: -1 dBFS, 10^(-1/20).
inline constexpr float normalizedPeak = 0.8912509f;

// The extension of a normalised result: the source's own, lower-cased, for the uncompressed and
// lossless containers we write; "m4a" for everything else (a lossy source is re-encoded as AAC).
QString normalizedExtension(const QString& sourcePath);

// The container for a result's extension ("aif" is AIFF); nullopt for one we don't write.
std::optional<AudioContainer> containerForExtension(const QString& extension);

// The most channels a result in `container` carries: AAC's channel configurations and FLAC
// end at eight (7.1); PCM has no limit.
std::optional<int> channelLimit(AudioContainer container);

// The libavformat muxer writing `container`.
const char* muxerName(AudioContainer container);

// Whether `container` holds a cover picture (WAV and CAF have no place for one).
bool holdsCoverArt(AudioContainer container);

}  // namespace wendrel::media
