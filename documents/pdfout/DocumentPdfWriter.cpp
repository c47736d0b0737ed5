#include "DocumentPdfWriter.h"

#include "PaperSize.h"
#include "PrintPreparation.h"
#include "operations/OperationError.h"

#include <QAbstractTextDocumentLayout>
#include <QCoreApplication>
#include <QPainter>
#include <QPdfWriter>
#include <QSaveFile>
#include <QAbstractEventDispatcher>
#include <QTextDocument>
#include <QThread>

#include <exception>
#include <memory>

namespace wendrel::document {

namespace {

constexpr double marginMillimetres = 20;
constexpr double pageNumberMillimetres = 8;  // below the text, inside the margin-framed area

OperationError unsavable(const QString& reason = {})
{
    return OperationError::withReason(QCoreApplication::translate("DocumentPdfWriter", "Couldn't save the PDF"),
                                      reason);
}

void drawPages(QTextDocument& copy, QPdfWriter& writer)
{
    QPainter painter;
    if (!painter.begin(&writer))
        throw unsavable();
    const QRectF area = writer.pageLayout().paintRectPixels(writer.resolution());
    const double pageNumberHeight = pageNumberMillimetres / 25.4 * writer.resolution();
    const QSizeF textArea(area.width(), area.height() - pageNumberHeight);
    const double pixelsPer96 = writer.resolution() / 96.0;

    // Prepared before the layout exists: every change to a laid-out document lays it out
    // again, which for a long one takes minutes.
    prepareForPrinting(copy, textArea.width() / pixelsPer96);
    QAbstractTextDocumentLayout* layout = copy.documentLayout();
    layout->setPaintDevice(&writer);
    copy.setPageSize(textArea);

    QFont numberFont(QStringLiteral("DejaVu Sans"), 9);
    const int pages = copy.pageCount();
    for (int page = 0; page < pages; ++page) {
        if (page > 0 && !writer.newPage())
            throw unsavable();
        painter.save();
        painter.translate(0, -page * textArea.height());
        QAbstractTextDocumentLayout::PaintContext context;
        context.clip = QRectF(QPointF(0, page * textArea.height()), textArea);
        painter.setClipRect(context.clip);
        layout->draw(&painter, context);
        painter.restore();

        painter.setFont(numberFont);
        painter.setPen(Qt::darkGray);
        painter.drawText(QRectF(0, textArea.height(), textArea.width(), pageNumberHeight),
                         Qt::AlignHCenter | Qt::AlignBottom, QString::number(page + 1));
    }
    if (!painter.end())
        throw unsavable();
}

void writePdf(QTextDocument& copy, const QString& path, const QString& title)
{
    QSaveFile file(path);
    if (!file.open(QIODevice::WriteOnly))
        throw unsavable(file.errorString());
    {
        QPdfWriter writer(&file);
        writer.setTitle(title);
        writer.setCreator(QStringLiteral("Wendrel"));
        writer.setPageLayout(QPageLayout(QPageSize(defaultPaper()), QPageLayout::Portrait,
                                         QMarginsF(marginMillimetres, marginMillimetres, marginMillimetres,
                                                   marginMillimetres),
                                         QPageLayout::Millimeter));
        drawPages(copy, writer);
    }
    if (!file.commit())
        throw unsavable(file.errorString());
}

}  // namespace

void writeDocumentPdf(const QTextDocument& document, const QString& path, const QString& title)
{
    // The copy takes the page's fonts and sizes; the caller's document stays as it was. Made
    // here, as copying gives the original a layout object of the caller's thread.
    const std::unique_ptr<QTextDocument> copy(document.clone());
    if (QAbstractEventDispatcher::instance()) {
        writePdf(*copy, path, title);
        return;
    }
    // Qt's text layout sets timers as it goes, which only a QThread can; a job's own thread
    // isn't one. The copy moves to a QThread for the drawing while this thread waits.
    std::exception_ptr failure;
    const std::unique_ptr<QThread> thread(QThread::create([&] {
        try {
            writePdf(*copy, path, title);
        } catch (...) {
            failure = std::current_exception();
        }
    }));
    copy->moveToThread(thread.get());
    thread->start();
    thread->wait();
    if (failure)
        std::rethrow_exception(failure);
}

}  // namespace wendrel::document
