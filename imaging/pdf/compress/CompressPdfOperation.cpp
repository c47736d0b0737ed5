#include "CompressPdfOperation.h"

#include "CompressAsPictures.h"
#include "CompressKeepingText.h"
#include "PdfCompressionLevels.h"
#include "PdfCompressionSettingsView.h"
#include "imaging/VipsRuntime.h"
#include "imaging/pdf/PdfDocument.h"
#include "operations/FileNames.h"
#include "operations/Logging.h"
#include "operations/OperationCatalog.h"
#include "operations/prompt/SettingsPrompt.h"

#include <QDir>
#include <QFile>

#include <vector>

namespace wendrel {

namespace {

using Settings = PDFCompressionSettings;

// One compression of the file at a level, into `destination`, keeping text or with each page
// saved as a picture; its size in bytes.
qint64 compressAt(const QString& path, const Settings& settings, const PdfCompressionLevel& level,
                  const QString& destination, const OperationContext& context,
                  const std::function<void(double)>& progress)
{
    if (settings.rasterize)
        return compressAsPictures(path, level, destination, context, progress);
    return compressKeepingText(path, level, destination, context, progress);
}

// Tries the ladder's levels in turn, each into a scratch file of its own, and leaves only the
// chosen one: the first that fits the target, or the smallest. Returns its path.
QString compressToTarget(const QString& path, const Settings& settings, const OperationContext& context)
{
    const qint64 target = pdfTargetBytes(settings.targetMB);
    std::vector<QString> attempts;
    const auto removeAttempts = [&](std::optional<std::size_t> keep) {
        for (std::size_t i = 0; i < attempts.size(); ++i) {
            if (i != keep)
                QFile::remove(attempts[i]);
        }
    };
    try {
        const std::size_t chosen = chooseLadderLevel(pdfTargetSizeLadder, target, [&](const PdfCompressionLevel& level) {
            const std::size_t step = attempts.size();
            attempts.push_back(QDir(context.workDirectory()).filePath(QStringLiteral("level-%1.pdf").arg(step)));
            const double steps = double(pdfTargetSizeLadder.size());
            const qint64 bytes = compressAt(path, settings, level, attempts.back(), context, [&](double fraction) {
                context.progress((double(step) + fraction) / steps);
            });
            qCInfo(lcJobs, "pdf level %zu (q %.2f, %d ppi): %lld bytes, target %lld", step, level.quality,
                   level.pixelsPerInch, static_cast<long long>(bytes), static_cast<long long>(target));
            return bytes;
        });
        removeAttempts(chosen);
        return attempts[chosen];
    } catch (...) {
        removeAttempts(std::nullopt);
        throw;
    }
}

ProducedFile compressPdf(const QString& path, const OperationContext& context)
{
    // Pictures are decoded and encoded by libvips: with its cache off and its warnings logged.
    startVips();
    // What the user confirmed for this job; the stored settings when nobody was asked.
    const Settings settings = settingsForJob<Settings>(context);
    const QString name = outputName(path, pdfText("Compressed"), QStringLiteral("pdf"));
    if (settings.mode == Settings::Mode::quality) {
        return context.produce(path, name, [&](const QString& destination) {
            compressAt(path, settings, pdfCompressionLevel(settings.quality), destination, context,
                       [&](double fraction) { context.progress(fraction); });
        });
    }
    const QString chosen = compressToTarget(path, settings, context);
    return context.produce(path, name, [&](const QString& destination) {
        if (!QFile::rename(chosen, destination))
            throw pdfCouldNotSave();
    });
}

}  // namespace

void registerCompressPdfOperation(OperationCatalog& catalog)
{
    Op::Definition entry = pdfEntry(
        {.id = "pdf.compress", .title = pdfText("Compress"), .symbol = QStringLiteral("arrow.down.right.and.arrow.up.left"),
         .ring = RingKind::tools,
         .description = pdfText("Asks for quality or a target size. Text stays selectable unless you save pages as images.")},
        compressPdf);
    entry.prompt = settingsPrompt<Settings>(pdfCompressionSettingsView);
    catalog.add(Op::make(std::move(entry)));
}

}  // namespace wendrel
