#include "AudioOperations.h"

#include "ConvertAudio.h"
#include "NormalizeAudio.h"
#include "media/ffmpeg/MediaErrors.h"
#include "media/ffmpeg/StreamEncoder.h"
#include "operations/Op.h"
#include "operations/OperationCatalog.h"

namespace wendrel {

namespace {

using media::AudioContainer;
using media::mediaText;

FileOperationPtr audioTarget(EntryId id, const QString& title, AudioContainer container, const QString& extension,
                             AVCodecID codec, const QString& description)
{
    return Op::make({
        .entry = {.id = id, .title = title, .symbol = QStringLiteral("waveform"), .ring = RingKind::convert,
                  .inputs = {ContentType::audiovisualContent()}, .description = description},
        // Offered for every sound and movie but a file already in the target's format.
        .excludesExactly = {ContentType::fromExtension(extension)},
        .perFile = [container, extension](const QString& path, const OperationContext& context) -> OperationOutcome {
            return media::convertAudio(path, context, container, extension);
        },
        .available = [codec] { return media::findEncoder(codec) != nullptr; },
    });
}

}  // namespace

void registerAudioOperations(OperationCatalog& catalog)
{
    catalog.add(audioTarget("media.m4a", mediaText("M4A"), AudioContainer::m4a, QStringLiteral("m4a"), AV_CODEC_ID_AAC,
                            mediaText("Audio as AAC in M4A at the bitrate in Settings; a video gives its soundtrack.")));
    catalog.add(audioTarget("media.wav", mediaText("WAV"), AudioContainer::wav, QStringLiteral("wav"),
                            AV_CODEC_ID_PCM_S16LE,
                            mediaText("Uncompressed audio as WAV at the bit depth in Settings.")));
    catalog.add(audioTarget("media.aiff", mediaText("AIFF"), AudioContainer::aiff, QStringLiteral("aiff"),
                            AV_CODEC_ID_PCM_S16BE,
                            mediaText("Uncompressed audio as AIFF at the bit depth in Settings.")));
    catalog.add(audioTarget("media.flac", mediaText("FLAC"), AudioContainer::flac, QStringLiteral("flac"),
                            AV_CODEC_ID_FLAC, mediaText("Lossless compressed audio as FLAC, at the source's depth.")));
    catalog.add(Op::make({
        .entry = {.id = "audio.normalize", .title = mediaText("Normalize"), .symbol = QStringLiteral("dial.medium"),
                  .ring = RingKind::tools, .inputs = {ContentType::audio()},
                  .description = mediaText("Raises or lowers the volume so the loudest moment is just below the limit.")},
        .perFile = [](const QString& path, const OperationContext& context) -> OperationOutcome {
            return media::normalizeAudio(path, context);
        },
    }));
}

}  // namespace wendrel
