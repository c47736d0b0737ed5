#include "SubtitleOperations.h"

#include "SubtitleParser.h"
#include "SubtitleWriter.h"
#include "documents/TextFiles.h"
#include "operations/FileNames.h"
#include "operations/Op.h"
#include "operations/OperationCatalog.h"
#include "operations/OperationError.h"

#include <QCoreApplication>

namespace wendrel {

namespace {

using SubtitleOperations::SubtitleFormat;

// Subtitle files run to a few hundred kilobytes; anything far beyond is not one.
constexpr qint64 largestSubtitleFile = 64 * 1024 * 1024;

ProducedFile convertSubtitles(const QString& path, const OperationContext& context, SubtitleFormat format,
                              const QString& extension)
{
    const QString text = readUtf8TextFile(path, largestSubtitleFile);
    const QList<SubtitleOperations::Cue> cues = SubtitleOperations::parseSubtitles(text);
    if (cues.isEmpty())
        throw OperationError(QCoreApplication::translate("SubtitleOperations", "No subtitles found"));
    const QString output = SubtitleOperations::writeSubtitles(cues, format);
    return context.produce(path, outputName(path, std::nullopt, extension),
                           [&](const QString& destination) { writeUtf8TextFile(destination, output); });
}

FileOperationPtr subtitleEntry(EntryId id, const QString& title, SubtitleFormat format, const QString& extension,
                               const QString& description)
{
    return Op::make({
        .entry = {.id = id, .title = title, .symbol = QStringLiteral("captions.bubble"), .ring = RingKind::convert,
                  .inputs = {ContentType::subRip(), ContentType::webVtt()}, .description = description},
        .perFile = [format, extension](const QString& path, const OperationContext& context) {
            return convertSubtitles(path, context, format, extension);
        },
    });
}

}  // namespace

void registerSubtitleOperations(OperationCatalog& catalog)
{
    auto tr = [](const char* text) { return QCoreApplication::translate("SubtitleOperations", text); };
    catalog.add(subtitleEntry("subtitle.srt", tr("SRT"), SubtitleFormat::srt,
                              QStringLiteral("srt"), tr("Subtitles as SubRip (SRT).")));
    catalog.add(subtitleEntry("subtitle.vtt", tr("VTT"), SubtitleFormat::vtt,
                              QStringLiteral("vtt"), tr("Subtitles as WebVTT for the web.")));
    catalog.add(subtitleEntry("subtitle.txt", tr("TXT"), SubtitleFormat::txt,
                              QStringLiteral("txt"), tr("Just the spoken lines, as plain text.")));
}

}  // namespace wendrel
