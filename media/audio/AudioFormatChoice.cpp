#include "AudioFormatChoice.h"

#include "operations/FileNames.h"

extern "C" {
#include <libavcodec/codec_desc.h>
#include <libavcodec/avcodec.h>
}

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdlib>

namespace wendrel::media {

namespace {

using BitDepth = FormatSettings::BitDepth;

bool isFloatFormat(AVSampleFormat format)
{
    const AVSampleFormat packed = av_get_packed_sample_fmt(format);
    return packed == AV_SAMPLE_FMT_FLT || packed == AV_SAMPLE_FMT_DBL;
}

// The four sample encodings a PCM result can have.
enum class PcmDepth { s16, s24, s32, f32 };

PcmDepth matchingDepth(SampleDepth source)
{
    switch (source.kind) {
    case SampleDepth::Kind::floating:
        return PcmDepth::f32;
    case SampleDepth::Kind::none:
        // A lossy source was made from (at best) CD-quality audio and holds less than 16 bits
        // of real precision: 16-bit keeps all of it at half the size of float.
        return PcmDepth::s16;
    case SampleDepth::Kind::integer:
        break;
    }
    // 8-bit sources get 16 bits too: nothing is lost and every player reads them.
    if (source.bits <= 16)
        return PcmDepth::s16;
    return source.bits <= 24 ? PcmDepth::s24 : PcmDepth::s32;
}

PcmDepth chosenDepth(FormatSettings::BitDepth setting, SampleDepth source)
{
    switch (setting) {
    case BitDepth::bits16:
        return PcmDepth::s16;
    case BitDepth::bits24:
        return PcmDepth::s24;
    case BitDepth::bits32:
        return PcmDepth::s32;
    case BitDepth::float32:
        return PcmDepth::f32;
    case BitDepth::matchSource:
        break;
    }
    return matchingDepth(source);
}

}  // namespace

SampleDepth sourceDepth(AVCodecID codec, AVSampleFormat decodedFormat, int bitsPerRawSample)
{
    const AVCodecDescriptor* descriptor = avcodec_descriptor_get(codec);
    const int properties = descriptor ? descriptor->props : 0;
    if ((properties & AV_CODEC_PROP_LOSSY) && !(properties & AV_CODEC_PROP_LOSSLESS))
        return {SampleDepth::Kind::none, 0};
    if (isFloatFormat(decodedFormat))
        return {SampleDepth::Kind::floating, 32};
    if (bitsPerRawSample > 0)
        return {SampleDepth::Kind::integer, bitsPerRawSample};
    if (const int pcmBits = av_get_exact_bits_per_sample(codec); pcmBits > 0)
        return {SampleDepth::Kind::integer, pcmBits};
    if (const int bytes = av_get_bytes_per_sample(decodedFormat); bytes > 0)
        return {SampleDepth::Kind::integer, bytes * 8};
    return {SampleDepth::Kind::none, 0};
}

PcmEncoding pcmEncoding(AudioContainer container, FormatSettings::BitDepth setting, SampleDepth source)
{
    PcmDepth depth = chosenDepth(setting, source);
    // Plain AIFF has integer samples only (float needs the AIFF-C variant, which many players
    // refuse), so "32-bit float" — a WAV choice — gives AIFF its deepest integer: 32-bit.
    if (container == AudioContainer::aiff && depth == PcmDepth::f32)
        depth = PcmDepth::s32;
    // WAV is little-endian; AIFF is big-endian by definition and CAF's muxer defaults to it.
    const bool little = container == AudioContainer::wav;
    switch (depth) {
    case PcmDepth::s16:
        return {little ? AV_CODEC_ID_PCM_S16LE : AV_CODEC_ID_PCM_S16BE, AV_SAMPLE_FMT_S16, 0};
    case PcmDepth::s24:
        return {little ? AV_CODEC_ID_PCM_S24LE : AV_CODEC_ID_PCM_S24BE, AV_SAMPLE_FMT_S32, 24};
    case PcmDepth::s32:
        return {little ? AV_CODEC_ID_PCM_S32LE : AV_CODEC_ID_PCM_S32BE, AV_SAMPLE_FMT_S32, 0};
    case PcmDepth::f32:
        break;
    }
    return {little ? AV_CODEC_ID_PCM_F32LE : AV_CODEC_ID_PCM_F32BE, AV_SAMPLE_FMT_FLT, 0};
}

int flacBits(SampleDepth source)
{
    switch (source.kind) {
    case SampleDepth::Kind::floating:
        return 24;
    case SampleDepth::Kind::none:
        return 16;  // as for PCM: a lossy source holds no more than 16 bits of precision
    case SampleDepth::Kind::integer:
        break;
    }
    return source.bits <= 16 ? 16 : 24;
}

int aacSampleRate(int sourceRate)
{
    // The rates AAC's sampling frequency index names, up to the 48 kHz cap: higher rates only
    // spend bits on what nobody hears.
    static constexpr std::array rates{48000, 44100, 32000, 24000, 22050, 16000, 12000, 11025, 8000, 7350};
    const int wanted = std::min(sourceRate, 48000);
    return *std::min_element(rates.begin(), rates.end(), [wanted](int a, int b) {
        // The nearer rate; between two equally near, the higher one.
        const int da = std::abs(a - wanted);
        const int db = std::abs(b - wanted);
        return da != db ? da < db : a > b;
    });
}

int aacBitRate(int kilobitsPerSecond)
{
    // Below 32 kbit/s AAC falls apart; above 512 the encoder only clamps.
    return std::clamp(kilobitsPerSecond, 32, 512) * 1000;
}

const char* aacCoder(int bitRate) { return bitRate >= 128000 ? "fast" : "twoloop"; }

int normalizedRenderRate(int sourceRate) { return std::min(sourceRate, 48000); }

std::optional<float> normalizationGain(float peak)
{
    if (!(peak > 0) || !std::isfinite(peak))
        return std::nullopt;
    return normalizedPeak / peak;
}

QString normalizedExtension(const QString& sourcePath)
{
    const QString extension = splitExtension(lastPathComponent(sourcePath)).extension.toLower();
    if (extension == u"wav" || extension == u"aiff" || extension == u"aif" || extension == u"flac" ||
        extension == u"caf")
        return extension;
    return QStringLiteral("m4a");
}

std::optional<AudioContainer> containerForExtension(const QString& extension)
{
    const QString lower = extension.toLower();
    if (lower == u"m4a")
        return AudioContainer::m4a;
    if (lower == u"wav")
        return AudioContainer::wav;
    if (lower == u"aiff" || lower == u"aif")
        return AudioContainer::aiff;
    if (lower == u"flac")
        return AudioContainer::flac;
    if (lower == u"caf")
        return AudioContainer::caf;
    return std::nullopt;
}

std::optional<int> channelLimit(AudioContainer container)
{
    if (container == AudioContainer::m4a || container == AudioContainer::flac)
        return 8;
    return std::nullopt;
}

const char* muxerName(AudioContainer container)
{
    switch (container) {
    case AudioContainer::m4a:
        return "ipod";  // MP4 with the M4A brand and its tag atoms
    case AudioContainer::wav:
        return "wav";
    case AudioContainer::aiff:
        return "aiff";
    case AudioContainer::flac:
        return "flac";
    case AudioContainer::caf:
        break;
    }
    return "caf";
}

bool holdsCoverArt(AudioContainer container)
{
    return container == AudioContainer::m4a || container == AudioContainer::flac || container == AudioContainer::aiff;
}

}  // namespace wendrel::media
