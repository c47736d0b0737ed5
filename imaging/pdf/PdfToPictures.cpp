#include "PdfToPictures.h"

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
#include <QThread>

#include <vips/vips8>

#include <algorithm>
#include <atomic>
#include <exception>
#include <mutex>
#include <thread>
#include <vector>

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

// Every page into `folder`, on every core: each worker draws with a renderer of its own and
// takes the next page in order, writing it before it draws another, so however long the
// document only one page per worker is ever held. The first failure stops all workers and is
// the job's.
void writeAllPages(const PdfPageRenderer& first, ImageFormat format, const QString& folder,
                   const OperationContext& context)
{
    const int pageCount = first.pageCount();
    const int workerCount = std::clamp(QThread::idealThreadCount(), 1, pageCount);
    std::vector<PdfPageRenderer> renderers;
    renderers.reserve(size_t(workerCount));
    for (int worker = 1; worker < workerCount; ++worker)
        renderers.push_back(first.reopened());

    const QString extension = imageTarget(format).extension;
    std::atomic<int> nextPage{0};
    std::atomic<int> pagesDone{0};
    std::atomic_bool failed{false};
    std::exception_ptr failure;
    std::mutex failureMutex;

    auto work = [&](const PdfPageRenderer& renderer) {
        try {
            for (int page = nextPage++; page < pageCount && !failed; page = nextPage++) {
                context.throwIfCancelled();
                writePage(renderer, page, format, QDir(folder).filePath(pagePictureName(page + 1, extension)));
                context.progress(double(++pagesDone) / pageCount);
            }
        } catch (...) {
            const std::lock_guard lock(failureMutex);
            if (!failure)
                failure = std::current_exception();
            failed = true;
        }
    };

    {
        std::vector<std::jthread> threads;
        for (const PdfPageRenderer& renderer : renderers)
            threads.emplace_back(work, std::cref(renderer));
        work(first);  // this thread is one of the workers
    }
    if (failure)
        std::rethrow_exception(failure);
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
        writeAllPages(renderer, format, folder, context);
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
