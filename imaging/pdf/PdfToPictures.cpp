#include "PdfToPictures.h"

#include "PagesOnAllCores.h"
#include "PdfDocument.h"
#include "PdfPageRenderer.h"
#include "imaging/ImageEntries.h"
#include "imaging/ImageFormat.h"
#include "imaging/ImageWriter.h"
#include "operations/FileNames.h"
#include "operations/Logging.h"
#include "operations/OperationCatalog.h"
#include "operations/OperationError.h"

#include <QDir>

#include <vips/vips8>

namespace wendrel {

namespace {

// Print resolution: pages come out sharp enough to print or to read small type from.
constexpr double pageDpi = 300;
// Pages are mostly text and lines, where JPEG's artefacts show early.
constexpr double jpegQuality = 0.92;

std::optional<double> qualityFor(ImageFormat format)
{
    return format == ImageFormat::jpeg ? std::optional(jpegQuality) : std::nullopt;
}

void writePage(const PdfPageRenderer& renderer, int pageIndex, ImageFormat format, const QString& path)
{
    // Pages are made by the hundred: PNG's quick setting keeps a document's worth of them
    // from waiting on the compressor. A drawn page's only metadata is its resolution, which
    // the writer leaves out of a JPEG when told to drop metadata.
    writeImage(renderer.render(pageIndex, pageDpi), format, qualityFor(format), MetadataPolicy::keep, path,
               PngEffort::quick);
}

ProducedFile pagesAsPictures(const QString& path, const OperationContext& context, ImageFormat format)
{
    if (!canWrite(format))
        throw OperationError(imagingText("This format can't be written on this computer"));
    const PdfPageRenderer renderer(path, context);
    const QString extension = imageTarget(format).extension;
    if (renderer.pageCount() == 1) {
        return context.produce(path, outputName(path, std::nullopt, extension), [&](const QString& destination) {
            writePage(renderer, 0, format, destination);
        });
    }
    // Several pages: the folder, named after the document, is the result.
    return context.produce(path, outputName(path, std::nullopt, QString()), [&](const QString& folder) {
        if (!QDir().mkpath(folder))
            throw OperationError(QCoreApplication::translate("OperationContext", "Couldn't create a scratch folder"));
        // Each page is written as soon as it is drawn: one page per worker is ever held.
        forEachPageOnAllCores(
            renderer, context,
            [&](const PdfPageRenderer& own, int page) {
                writePage(own, page, format, QDir(folder).filePath(pagePictureName(page + 1, extension)));
            },
            [&](double fraction) { context.progress(fraction); });
    });
}

}  // namespace

QString pagePictureName(int pageNumber, const QString& extension)
{
    return pdfText("%1 %2.").arg(pdfText("Page")).arg(pageNumber, 3, 10, QLatin1Char('0')) + extension;
}

void registerPdfToPictures(OperationCatalog& catalog)
{
    const QString description = pdfText("Every page as a 300 DPI picture; several pages go into a folder.");
    const struct {
        EntryId id;
        ImageFormat format;
    } targets[] = {{"pdf.jpg", ImageFormat::jpeg}, {"pdf.png", ImageFormat::png}};
    for (const auto& [id, format] : targets) {
        Op::Definition entry = pdfEntry(
            {.id = id, .title = imageTarget(format).name,
             .symbol = QStringLiteral("photo.on.rectangle"), .ring = RingKind::convert, .description = description},
            [format = format](const QString& path, const OperationContext& context) {
                return OperationOutcome(pagesAsPictures(path, context, format));
            });
        entry.available = [format = format] { return canWrite(format); };
        catalog.add(Op::make(std::move(entry)));
    }
}

}  // namespace wendrel
