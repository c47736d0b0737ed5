#include "PdfDocument.h"

#include "operations/ContentType.h"
#include "operations/Logging.h"
#include "operations/OperationError.h"

#include <QFile>

#include <qpdf/QPDFExc.hh>
#include <qpdf/QPDFPageDocumentHelper.hh>
#include <qpdf/QPDFWriter.hh>

namespace wendrel {

namespace {

using OpenFunction = std::function<void(QPDF&)>;

std::unique_ptr<QPDF> open(const OpenFunction& process, const QString& description)
{
    auto pdf = std::make_unique<QPDF>();
    // A damaged file produces a warning per broken object; they go to the log, not the terminal.
    pdf->setSuppressWarnings(true);
    try {
        process(*pdf);
        // Walking the page tree reaches every page object, so a tree broken beyond repair
        // fails here rather than halfway through writing a result.
        if (QPDFPageDocumentHelper(*pdf).getAllPages().empty()) {
            qCInfo(lcJobs) << "pdf has no pages:" << description;
            throw pdfCantOpen();
        }
    } catch (const OperationError&) {
        throw;
    } catch (const QPDFExc& error) {
        qCInfo(lcJobs) << "pdf does not open:" << description << error.what();
        if (error.getErrorCode() == qpdf_e_password)
            throw OperationError(pdfText("This PDF is password-protected"));
        throw pdfCantOpen();
    } catch (const std::exception& error) {
        qCInfo(lcJobs) << "pdf does not open:" << description << error.what();
        throw pdfCantOpen();
    }
    if (pdf->anyWarnings())
        qCInfo(lcJobs) << "pdf opened with repairs:" << description;
    return pdf;
}

}  // namespace

OperationError pdfCantOpen() { return OperationError(pdfText("Can't open this PDF")); }
OperationError pdfCouldNotSave() { return OperationError(pdfText("Couldn't save the PDF")); }

std::unique_ptr<QPDF> openPdf(const QString& path)
{
    const QByteArray fileName = QFile::encodeName(path);
    return open([&](QPDF& pdf) { pdf.processFile(fileName.constData()); }, path);
}

std::unique_ptr<QPDF> openPdfFromMemory(const QByteArray& bytes, const QString& description)
{
    const QByteArray name = description.toUtf8();
    return open([&](QPDF& pdf) { pdf.processMemoryFile(name.constData(), bytes.constData(), size_t(bytes.size())); },
                description);
}

void writePdf(QPDF& pdf, const QString& path, const PdfWriteOptions& options)
{
    try {
        // The writer keeps the file name's pointer until write(): the bytes must outlive it.
        const QByteArray fileName = QFile::encodeName(path);
        QPDFWriter writer(pdf, fileName.constData());
        writer.setObjectStreamMode(options.objectStreams == PdfWriteOptions::ObjectStreams::generate ? qpdf_o_generate
                                                                                                      : qpdf_o_preserve);
        if (options.configure)
            options.configure(writer);
        writer.write();
    } catch (const OperationError&) {
        throw;
    } catch (const std::exception& error) {
        qCInfo(lcJobs) << "pdf write failed:" << path << error.what();
        throw pdfCouldNotSave();
    }
}

Op::Definition pdfEntry(EntryDescription entry, Op::PerFileBody body)
{
    entry.inputs = {ContentType::pdf()};
    return {.entry = std::move(entry), .perFile = std::move(body)};
}

}  // namespace wendrel
