#include "CompressAsPictures.h"

#include "imaging/ImageWriter.h"
#include "imaging/pdf/ImagesToPdf.h"
#include "imaging/pdf/PdfPageRenderer.h"
#include "operations/Logging.h"
#include "operations/OperationError.h"

#include <QFileInfo>

#include <vips/vips8>

#include <algorithm>
#include <atomic>
#include <exception>
#include <mutex>
#include <thread>
#include <vector>

namespace wendrel {

namespace {

PdfPicture pagePicture(const PdfPageRenderer& renderer, int page, const PdfCompressionLevel& level)
{
    const vips::VImage pixels = renderer.render(page, level.pixelsPerInch);
    PdfPicture picture;
    picture.pixels = {pixels.width(), pixels.height()};
    picture.components = 3;
    picture.isJpeg = true;
    picture.data = encodeImage(pixels, ImageFormat::jpeg, level.quality, MetadataPolicy::drop);
    picture.pageSize = renderer.displayedPageSize(page);
    return picture;
}

}  // namespace

qint64 compressAsPictures(const QString& source, const PdfCompressionLevel& level, const QString& destination,
                          const OperationContext& context, const std::function<void(double)>& progress)
{
    const PdfPageRenderer renderer(source, context);
    const int pages = renderer.pageCount();
    QList<PdfPicture> pictures(pages);

    // A renderer draws on one thread only: every worker takes one of its own, and claims the
    // next page until none is left or one of them fails.
    std::atomic<int> next{0};
    std::atomic<int> done{0};
    std::exception_ptr failure;
    std::mutex failureMutex;
    const auto work = [&](const PdfPageRenderer& own) {
        try {
            for (int page = next++; page < pages; page = next++) {
                context.throwIfCancelled();
                pictures[page] = pagePicture(own, page, level);
                if (progress)
                    progress(double(++done) / pages);
            }
        } catch (...) {
            const std::lock_guard lock(failureMutex);
            if (!failure)
                failure = std::current_exception();
            next = pages;  // the others stop at their next page
        }
    };
    const int threads = std::clamp(int(std::thread::hardware_concurrency()), 1, std::max(1, pages));
    {
        std::vector<PdfPageRenderer> others;
        for (int i = 1; i < threads; ++i)
            others.push_back(renderer.reopened());
        std::vector<std::jthread> helpers;
        for (const PdfPageRenderer& other : others)
            helpers.emplace_back(work, std::cref(other));
        work(renderer);
    }
    if (failure)
        std::rethrow_exception(failure);

    writePicturesPdf(pictures, destination);
    qCInfo(lcJobs, "pdf pages as pictures: %d pages at %d per inch", pages, level.pixelsPerInch);
    return QFileInfo(destination).size();
}

}  // namespace wendrel
