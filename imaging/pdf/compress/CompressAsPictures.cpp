#include "CompressAsPictures.h"

#include "imaging/ImageWriter.h"
#include "imaging/pdf/ImagesToPdf.h"
#include "imaging/pdf/PagesOnAllCores.h"
#include "imaging/pdf/PdfPageRenderer.h"
#include "operations/Logging.h"
#include "operations/OperationError.h"

#include <QFileInfo>

#include <vips/vips8>


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

    forEachPageOnAllCores(
        renderer, context,
        [&](const PdfPageRenderer& own, int page) { pictures[page] = pagePicture(own, page, level); }, progress);

    writePicturesPdf(pictures, destination);
    qCInfo(lcJobs, "pdf pages as pictures: %d pages at %d per inch", pages, level.pixelsPerInch);
    return QFileInfo(destination).size();
}

}  // namespace wendrel
