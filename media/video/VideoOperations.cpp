#include "VideoOperations.h"

#include "ContainerRules.h"
#include "MutedMovie.h"
#include "SoundtrackWriter.h"
#include "VideoChoices.h"
#include "media/ffmpeg/MediaErrors.h"
#include "media/ffmpeg/MediaInput.h"
#include "media/ffmpeg/StreamEncoder.h"
#include "operations/FileNames.h"
#include "operations/Logging.h"
#include "operations/Op.h"
#include "operations/OperationCatalog.h"

namespace wendrel {

namespace {

using namespace media;

ProducedFile convertMovie(const QString& path, const OperationContext& context, MovieContainer container)
{
    const MovieEncoding encoding = conversionEncoding(FormatSettings::load(), container);
    const QString name = outputName(path, std::nullopt, QString::fromLatin1(extensionOf(container)));
    return context.produce(path, name, [&](const QString& destination) {
        const MovieResult result = writeMovie(path, destination, encoding, context,
                                              [&](double fraction) { context.progress(fraction); });
        qCInfo(lcJobs, "%s: %dx%d, %lld bytes, picture %s, sound %s", qPrintable(name), result.width, result.height,
               result.bytes, result.videoCopied ? "copied" : "encoded", result.audioCopied ? "copied" : "encoded");
    });
}

ProducedFile muteMovie(const QString& path, const OperationContext& context)
{
    MediaInput input(path, context);
    const MutedContainer container = mutedContainerFor(path, input);
    const QString name = outputName(path, mediaText("Muted"), container.extension);
    return context.produce(path, name, [&](const QString& destination) {
        writeMutedMovie(input, destination, *container.format, context,
                        [&](double fraction) { context.progress(fraction); });
    });
}

ProducedFile extractSoundtrack(const QString& path, const OperationContext& context)
{
    const int bitsPerSecond = std::clamp(FormatSettings::load().audioBitrate, 32, 512) * 1000;
    return context.produce(path, outputName(path, std::nullopt, QStringLiteral("m4a")), [&](const QString& destination) {
        writeSoundtrack(path, destination, bitsPerSecond, context, [&](double fraction) { context.progress(fraction); });
    });
}

FileOperationPtr conversionEntry(EntryId id, const QString& title, MovieContainer container, const QString& description)
{
    return Op::make({
        .entry = {.id = id, .title = title, .symbol = QStringLiteral("film"), .ring = RingKind::convert,
                  .inputs = {ContentType::movie()}, .description = description},
        // Converting a file to its own container would only copy it.
        .excludesExactly = {ContentType::fromExtension(QString::fromLatin1(extensionOf(container)))},
        .perFile = [container](const QString& path, const OperationContext& context) -> OperationOutcome {
            return convertMovie(path, context, container);
        },
        .available = [] { return findEncoder("libx264") && findEncoder(AV_CODEC_ID_AAC); },
    });
}

}  // namespace

void registerVideoOperations(OperationCatalog& catalog)
{
    catalog.add(conversionEntry("media.mp4", mediaText("MP4"), MovieContainer::mp4,
                                mediaText("H.264 and AAC in MP4, the movie every device plays.")));
    catalog.add(conversionEntry("media.mov", mediaText("MOV"), MovieContainer::mov,
                                mediaText("H.264 and AAC in a QuickTime movie, for editing apps.")));
    catalog.add(Op::make({
        .entry = {.id = "video.mute", .title = mediaText("Mute"), .symbol = QStringLiteral("speaker.slash"),
                  .ring = RingKind::tools, .inputs = {ContentType::movie()},
                  .description = mediaText("Copy without sound, without re-encoding the picture.")},
        .perFile = [](const QString& path, const OperationContext& context) -> OperationOutcome {
            return muteMovie(path, context);
        },
    }));
    catalog.add(Op::make({
        .entry = {.id = "video.extractAudio", .title = mediaText("Extract Audio"), .symbol = QStringLiteral("waveform"),
                  .ring = RingKind::tools, .inputs = {ContentType::movie()},
                  .description = mediaText("Saves the soundtrack as M4A.")},
        .perFile = [](const QString& path, const OperationContext& context) -> OperationOutcome {
            return extractSoundtrack(path, context);
        },
    }));
}

}  // namespace wendrel
