#include "CompressKeepingText.h"

#include "PictureRecompression.h"
#include "imaging/pdf/PdfDocument.h"
#include "operations/Logging.h"

#include <QFile>
#include <QFileInfo>

namespace wendrel {

qint64 compressKeepingText(const QString& source, const PdfCompressionLevel& level, const QString& destination,
                           const OperationContext& context, const std::function<void(double)>& progress)
{
    const std::unique_ptr<QPDF> pdf = openPdf(source);
    try {
        recompressPictures(*pdf, level, context, progress);
    } catch (const OperationError&) {
        throw;
    } catch (const std::exception& error) {
        // A stream that fails only when read: the document can't be compressed as a whole.
        qCInfo(lcJobs) << "pdf pictures failed:" << source << error.what();
        throw pdfCantOpen();
    }
    writePdf(*pdf, destination, {.objectStreams = PdfWriteOptions::ObjectStreams::generate});

    const qint64 sourceBytes = QFileInfo(source).size();
    const qint64 written = QFileInfo(destination).size();
    if (written > 0 && written < sourceBytes)
        return written;
    qCInfo(lcJobs, "pdf compression saved nothing (%lld of %lld bytes): the source is the result",
           static_cast<long long>(written), static_cast<long long>(sourceBytes));
    if (!QFile::remove(destination) || !QFile::copy(source, destination))
        throw pdfCouldNotSave();
    return sourceBytes;
}

}  // namespace wendrel
