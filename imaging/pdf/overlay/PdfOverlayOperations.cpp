#include "PdfOverlayOperations.h"

#include "OverlayPdf.h"
#include "OverlayStamp.h"
#include "OverlayTexts.h"
#include "PageFrame.h"
#include "TextMappingRepair.h"
#include "WatermarkPrompt.h"
#include "imaging/pdf/PdfDocument.h"
#include "operations/FileNames.h"
#include "operations/Logging.h"
#include "operations/OperationCatalog.h"

#include <qpdf/QPDFPageDocumentHelper.hh>
#include <qpdf/QPDFWriter.hh>

#include <QFileInfo>
#include <QMap>

namespace wendrel {

namespace {

OperationError cantCreate() { return OperationError(pdfText("Couldn't create the PDF")); }

// What goes over a document's pages: the distinct overlay pages, each with its displayed size,
// and for every page of the document the overlay page that goes over it.
struct OverlayPlan {
    QList<QSizeF> sizes;
    std::vector<size_t> overlayPageOf;
};

// One overlay page per page.
OverlayPlan pagePerPage(const QList<QSizeF>& displayedSizes)
{
    OverlayPlan plan{.sizes = displayedSizes, .overlayPageOf = {}};
    for (qsizetype index = 0; index < displayedSizes.size(); ++index)
        plan.overlayPageOf.push_back(size_t(index));
    return plan;
}

// Pages of the same displayed size share an overlay page: for a mark that is the same on every
// page, a document of thousands of pages gains one form, not thousands.
OverlayPlan pagePerSize(const QList<QSizeF>& displayedSizes)
{
    OverlayPlan plan;
    QMap<std::pair<qint64, qint64>, size_t> bySize;
    for (const QSizeF& size : displayedSizes) {
        // Sizes equal to a thousandth of a point are the same page size.
        const std::pair<qint64, qint64> key{qRound64(size.width() * 1000), qRound64(size.height() * 1000)};
        auto found = bySize.find(key);
        if (found == bySize.end()) {
            found = bySize.insert(key, size_t(plan.sizes.size()));
            plan.sizes.append(size);
        }
        plan.overlayPageOf.push_back(*found);
    }
    return plan;
}

using PlanFunction = OverlayPlan (*)(const QList<QSizeF>& displayedSizes);

// Draws the overlay with Qt, stamps it over the pages with qpdf and writes the result. The
// source's content streams are copied as they are: its text stays text, its links and forms
// stay where they were.
OperationOutcome overlayEveryPage(const QString& path, const OperationContext& context, const QString& suffix,
                                  PlanFunction plan, const OverlayPainter& paint)
{
    std::unique_ptr<QPDF> document = openPdf(path);
    // qpdf keeps the objects it has read; a document takes a few times its size at most.
    const auto reservation = context.reserveMemory(3 * QFileInfo(path).size());

    QList<QSizeF> displayedSizes;
    std::vector<QPDFPageObjectHelper> pages;
    try {
        pages = QPDFPageDocumentHelper(*document).getAllPages();
        for (QPDFPageObjectHelper& page : pages) {
            const QSizeF size = pageFrame(page).displayedSize();
            if (!(size.width() >= 1 && size.height() >= 1 && size.width() <= 1e6 && size.height() <= 1e6)) {
                qCInfo(lcJobs) << "pdf page has no usable size:" << path << size;
                throw cantCreate();
            }
            displayedSizes.append(size);
        }
    } catch (const std::exception& error) {
        qCInfo(lcJobs) << "pdf pages unreadable:" << path << error.what();
        throw cantCreate();
    }
    const OverlayPlan overlayPlan = plan(displayedSizes);

    const QString extension = splitExtension(QFileInfo(path).fileName()).extension;
    const QString name = outputName(path, suffix, extension.isEmpty() ? QStringLiteral("pdf") : extension);
    return context.produce(path, name, [&](const QString& destination) {
        const QString overlayPath = context.outputUrl(QStringLiteral("overlay.pdf"));
        writeOverlayPdf(overlayPlan.sizes, paint, overlayPath, context);
        std::unique_ptr<QPDF> overlay;
        try {
            overlay = openPdf(overlayPath);
            mapTabGlyphsToSpaces(*overlay);
            stampOverlay(*document, *overlay, overlayPlan.overlayPageOf);
        } catch (const std::exception& error) {
            qCInfo(lcJobs) << "pdf overlay failed:" << path << error.what();
            throw cantCreate();
        }
        context.throwIfCancelled();
        context.progress(0.4);
        // The writer's percentage is the rest of the file's progress.
        writePdf(*document, destination, {.configure = [&context](QPDFWriter& writer) {
                     writer.registerProgressReporter(std::make_shared<QPDFWriter::FunctionProgressReporter>(
                         [&context](int percentage) { context.progress(0.4 + 0.6 * percentage / 100.0); }));
                 }});
        QFile::remove(overlayPath);
    });
}

OperationOutcome numberPages(const QString& path, const OperationContext& context)
{
    return overlayEveryPage(path, context, pdfText("Numbered"), pagePerPage,
                            [](QPainter& painter, const QSizeF& pageSize, qsizetype index, qsizetype count) {
                                paintPageNumber(painter, pageSize, pageNumberText(index + 1, count));
                            });
}

OperationOutcome watermarkPages(const QString& path, const OperationContext& context)
{
    const QString text = watermarkTextForJob(context);
    return overlayEveryPage(path, context, pdfText("Watermarked"), pagePerSize,
                            [&text](QPainter& painter, const QSizeF& pageSize, qsizetype, qsizetype) {
                                paintWatermark(painter, pageSize, text);
                            });
}

}  // namespace

void registerPdfOverlayOperations(OperationCatalog& catalog)
{
    catalog.add(Op::make(pdfEntry({.id = "pdf.number", .title = pdfText("Number Pages"),
                                   .symbol = QStringLiteral("number.square"), .ring = RingKind::tools,
                                   .description = pdfText("Adds “page / total” at the bottom of every page."),
                                   .drawsText = true},
                                  numberPages)));

    Op::Definition watermark = pdfEntry({.id = "pdf.watermark", .title = pdfText("Watermark"),
                                         .symbol = QStringLiteral("drop.triangle"), .ring = RingKind::tools,
                                         .description = pdfText("Asks for a text and prints it diagonally across every page."),
                                         .drawsText = true},
                                        watermarkPages);
    watermark.prompt = watermarkPrompt();
    catalog.add(Op::make(std::move(watermark)));
}

}  // namespace wendrel
