#include "OverlayPdf.h"

#include "imaging/pdf/PdfDocument.h"
#include "operations/Logging.h"
#include "operations/OperationContext.h"

#include <QFileInfo>
#include <QGuiApplication>
#include <QPageLayout>
#include <QPainter>
#include <QPdfWriter>

#include <cmath>

namespace wendrel {

namespace {

// Qt's PDF pages have whole-point sizes: each overlay page is the displayed page rounded up, and
// drawing is shifted so the displayed page sits in its lower-left corner, where PDF's origin
// is. The extra fraction of a point lies outside the page and is never seen.
QSizeF wholePoints(const QSizeF& size)
{
    return {std::max(1.0, std::ceil(size.width())), std::max(1.0, std::ceil(size.height()))};
}

// Drawing takes about a third of the time the whole overlay takes, writing the result the rest.
constexpr double drawingShare = 0.3;

QPageLayout layoutFor(const QSizeF& size)
{
    return QPageLayout(QPageSize(wholePoints(size), QPageSize::Point), QPageLayout::Portrait, QMarginsF());
}

}  // namespace

void writeOverlayPdf(const QList<QSizeF>& pageSizes, const OverlayPainter& paint, const QString& path,
                     const OperationContext& context)
{
    const auto cantCreate = [] { return OperationError(pdfText("Couldn't create the PDF")); };
    // Fonts come from the platform integration, which only a QGuiApplication has: without one,
    // Qt would end the process at the first glyph.
    if (pageSizes.isEmpty() || !qobject_cast<QGuiApplication*>(QCoreApplication::instance())) {
        qCWarning(lcJobs) << "overlay pdf needs a QGuiApplication and pages";
        throw cantCreate();
    }

    QPdfWriter writer(path);
    writer.setResolution(72);  // a painter unit is a point
    writer.setCreator(QStringLiteral("Wendrel"));
    writer.setPageLayout(layoutFor(pageSizes.first()));
    QPainter painter;
    if (!painter.begin(&writer)) {
        qCInfo(lcJobs) << "overlay pdf can't be written:" << path;
        throw cantCreate();
    }
    for (qsizetype index = 0; index < pageSizes.size(); ++index) {
        if (index % 64 == 0) {
            if (context.isCancelled()) {
                painter.end();
                context.throwIfCancelled();
            }
            context.progress(drawingShare * double(index) / double(pageSizes.size()));
        }
        const QSizeF size = pageSizes[index];
        if (index > 0) {
            writer.setPageLayout(layoutFor(size));
            writer.newPage();
        }
        painter.save();
        painter.translate(0, wholePoints(size).height() - size.height());
        paint(painter, size, index, pageSizes.size());
        painter.restore();
    }
    if (!painter.end() || QFileInfo(path).size() == 0) {
        qCInfo(lcJobs) << "overlay pdf incomplete:" << path;
        throw cantCreate();
    }
}

QFont overlayFont(double pointSize, bool bold)
{
    QFont font;
    font.setFamilies({QStringLiteral("DejaVu Sans"), QStringLiteral("WenQuanYi Micro Hei"), QStringLiteral("Symbola")});
    font.setStyleHint(QFont::SansSerif);
    font.setPointSizeF(pointSize);
    font.setBold(bold);
    // Glyphs as the font draws them, not nudged to a screen's pixel grid: the page is not a screen.
    font.setHintingPreference(QFont::PreferNoHinting);
    font.setKerning(true);
    return font;
}

}  // namespace wendrel
