#include "PdfMerge.h"

#include "ImagesToPdf.h"
#include "MergedPdf.h"
#include "PdfDocument.h"
#include "imaging/ImageEntries.h"
#include "operations/FileNames.h"
#include "operations/OperationCatalog.h"
#include "operations/OperationError.h"

namespace wendrel {

namespace {

// Reading the sources is about half the work, writing the rest: a long manual's streams are
// read and copied only then.
constexpr double readingShare = 0.5;

// A source's entry in the outline: its file name without the extension.
QString sourceTitle(const QString& path) { return splitExtension(lastPathComponent(path)).base; }

OperationOutcome mergeFiles(const QStringList& paths, const OperationContext& context)
{
    if (paths.size() < 2)
        throw OperationError(pdfText("Drop two or more files to merge"));

    // Every source is read before anything is written: a file that can't be read or is
    // locked stops the merge with nothing made.
    MergedPdf merged;
    for (qsizetype index = 0; index < paths.size(); ++index) {
        context.throwIfCancelled();
        const QString& path = paths[index];
        if (ContentType::ofFile(path).conformsTo(ContentType::pdf()))
            merged.appendDocument(openPdf(path), sourceTitle(path));
        else
            merged.appendPicture(pdfPictureFromFile(path, context), sourceTitle(path));
        context.progress(readingShare * double(index + 1) / double(paths.size()));
    }
    const QString name = outputName(paths.first(), pdfText("Merged"), QStringLiteral("pdf"));
    return context.produce(paths.first(), name, [&](const QString& destination) {
        merged.write(destination, [&context](double written) {
            context.progress(readingShare + (1 - readingShare) * written);
        });
    });
}

// What the entry refuses: the types the image entries refuse, but for PDF, which it takes as
// a document.
QList<ContentType> unmergeableTypes()
{
    QList<ContentType> types = nonRasterImages();
    types.removeAll(ContentType::pdf());
    return types;
}

}  // namespace

void registerPdfMerge(OperationCatalog& catalog)
{
    catalog.add(Op::make({
        .entry = {.id = "pdf.merge", .title = pdfText("Merge"), .symbol = QStringLiteral("square.stack.3d.down.right"),
                  .ring = RingKind::tools, .inputs = {ContentType::pdf(), ContentType::image()},
                  .excludes = unmergeableTypes(),
                  .description = pdfText("Joins the dropped PDFs and images into one PDF, in drop order.")},
        .combined = mergeFiles,
    }));
}

}  // namespace wendrel
