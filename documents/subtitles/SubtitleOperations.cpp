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

OperationOutcome convertSubtitles(const QStringList& paths, const OperationContext& context,
                                  SubtitleFormat format, const QString& extension)
{
    QList<ProducedFile> produced;
    for (const QString& path : paths) {
        context.throwIfCancelled();
        const QString text = readUtf8TextFile(path, largestSubtitleFile);
        const QList<SubtitleOperations::Cue> cues = SubtitleOperations::parseSubtitles(text);
        if (cues.isEmpty()) {
            throw OperationError(
                QCoreApplication::translate("SubtitleOperations", "No subtitles found"));
        }
        const QString output = SubtitleOperations::writeSubtitles(cues, format);
        const QString name = outputName(path, std::nullopt, extension);
        const QString destination = context.outputUrl(name);
        writeUtf8TextFile(destination, output);
        produced.append({destination, name, path});
    }
    return OperationOutcome::files(produced);
}

FileOperationPtr subtitleEntry(const QString& id, const QString& title, SubtitleFormat format,
                               const QString& extension, const QString& description)
{
    return Op::make({
        .id = id,
        .title = title,
        .symbol = QStringLiteral("captions.bubble"),
        .ring = RingKind::convert,
        .combinesInputs = false,
        .inputs = {ContentType::subRip(), ContentType::webVtt()},
        .excludes = {},
        .excludesExactly = {},
        .description = description,
        .body = [format, extension](const QStringList& paths, const OperationContext& context) {
            return convertSubtitles(paths, context, format, extension);
        },
    });
}

}  // namespace

void registerSubtitleOperations(OperationCatalog& catalog)
{
    auto tr = [](const char* text) { return QCoreApplication::translate("SubtitleOperations", text); };
    catalog.add(subtitleEntry(QStringLiteral("subtitle.srt"), tr("SRT"), SubtitleFormat::srt,
                              QStringLiteral("srt"), tr("Subtitles as SubRip (SRT).")));
    catalog.add(subtitleEntry(QStringLiteral("subtitle.vtt"), tr("VTT"), SubtitleFormat::vtt,
                              QStringLiteral("vtt"), tr("Subtitles as WebVTT for the web.")));
    catalog.add(subtitleEntry(QStringLiteral("subtitle.txt"), tr("TXT"), SubtitleFormat::txt,
                              QStringLiteral("txt"), tr("Just the spoken lines, as plain text.")));
}

}  // namespace wendrel
