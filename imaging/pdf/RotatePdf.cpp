#include "RotatePdf.h"

#include "PageRotation.h"
#include "PdfDocument.h"
#include "operations/FileNames.h"
#include "operations/Logging.h"
#include "operations/OperationCatalog.h"

#include <qpdf/QPDFPageDocumentHelper.hh>

#include <cmath>

namespace wendrel {

namespace {

// The page's own /Rotate, or the one it inherits; 0 when there is none or it isn't a number.
int currentRotation(QPDFPageObjectHelper& page)
{
    QPDFObjectHandle rotate = page.getAttribute("/Rotate", false);
    if (rotate.isInteger())
        return int(rotate.getIntValue() % 360);
    if (rotate.isReal())
        return int(std::lround(std::fmod(rotate.getNumericValue(), 360.0)));
    return 0;
}

ProducedFile rotatePdf(const QString& path, const OperationContext& context)
{
    const std::unique_ptr<QPDF> pdf = openPdf(path);
    try {
        turnPagesRight(*pdf);
    } catch (const std::exception& error) {
        qCInfo(lcJobs) << "pdf pages unreadable:" << path << error.what();
        throw pdfCantOpen();
    }
    context.throwIfCancelled();
    return context.produce(path, outputName(path, pdfText("Rotated")),
                           [&](const QString& destination) { writePdf(*pdf, destination); });
}

}  // namespace

void turnPagesRight(QPDF& pdf)
{
    for (QPDFPageObjectHelper& page : QPDFPageDocumentHelper(pdf).getAllPages()) {
        // Set on the page itself: it then overrides an inherited value for this page only.
        page.getObjectHandle().replaceKey("/Rotate",
                                          QPDFObjectHandle::newInteger(rotationTurnedRight(currentRotation(page))));
    }
}

void registerRotatePdf(OperationCatalog& catalog)
{
    catalog.add(Op::make(pdfEntry({.id = "pdf.rotate", .title = pdfText("Rotate Right"),
                                   .symbol = QStringLiteral("rotate.right"), .ring = RingKind::tools,
                                   .description = pdfText("Turns every page 90° clockwise.")},
                                  rotatePdf)));
}

}  // namespace wendrel
