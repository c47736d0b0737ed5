#include "MergedPdf.h"

#include "operations/Logging.h"
#include "operations/OperationError.h"

#include <qpdf/QPDFPageDocumentHelper.hh>

namespace wendrel {

MergedPdf::MergedPdf() { m_pdf.emptyPDF(); }

std::vector<QPDFObjectHandle> MergedPdf::copyPages(QPDF& source)
{
    // A page's size and resources may live on the page tree above it; they move onto the
    // page, since the tree itself stays behind.
    source.pushInheritedAttributesToPage();

    // qpdf maps a reference to a page only once that page is copied, and drops the others:
    // a link to a later page would lose its target. So the links wait until every page of
    // the source is over.
    QPDFPageDocumentHelper pages(m_pdf);
    std::vector<QPDFObjectHandle> copies;
    std::vector<QPDFObjectHandle> links;
    for (QPDFPageObjectHelper& page : QPDFPageDocumentHelper(source).getAllPages()) {
        QPDFObjectHandle object = page.getObjectHandle();
        links.push_back(object.getKey("/Annots"));
        object.removeKey("/Annots");
        pages.addPage(page, false);
        copies.push_back(m_pdf.getAllPages().back());
    }
    for (size_t i = 0; i < copies.size(); ++i) {
        if (!links[i].isNull())
            copies[i].replaceKey("/Annots", foreignCopy(m_pdf, source, links[i]));
    }
    return copies;
}

void MergedPdf::appendDocument(std::unique_ptr<QPDF> source, const QString& title)
{
    std::vector<QPDFObjectHandle> copies;
    try {
        copies = copyPages(*source);
    } catch (const std::exception& error) {
        qCInfo(lcJobs) << "pdf pages don't copy:" << title << error.what();
        throw pdfCantOpen();
    }

    DestinationRenames renames;
    try {
        renames = m_destinations.add(m_pdf, *source);
        if (!renames.empty()) {
            for (QPDFObjectHandle& page : copies) {
                QPDFObjectHandle annotations = page.getKey("/Annots");
                if (annotations.isArray()) {
                    for (QPDFObjectHandle annotation : annotations.aitems())
                        renameDestinationReferences(annotation, renames);
                }
            }
        }
    } catch (const std::exception& error) {
        qCInfo(lcJobs) << "pdf named destinations left out:" << title << error.what();
    }
    m_outline.addSource(m_pdf, source.get(), title, copies.front(), renames);
    m_labels.addSource(m_pdf, source.get(), static_cast<long long>(copies.size()));
    m_sources.push_back(std::move(source));
}

void MergedPdf::appendPicture(const PdfPicture& picture, const QString& title)
{
    const QPDFObjectHandle page = addPicturePage(m_pdf, picture);
    m_outline.addSource(m_pdf, nullptr, title, page, {});
    m_labels.addSource(m_pdf, nullptr, 1);
}

void MergedPdf::write(const QString& path, const std::function<void(double)>& progress)
{
    m_outline.install(m_pdf);
    m_destinations.install(m_pdf);
    m_labels.install(m_pdf);
    // Object streams pack the many small objects of links, bookmarks and destinations: a
    // long manual's merge comes out a quarter smaller for a fifth more time.
    writePdf(m_pdf, path,
             {.objectStreams = PdfWriteOptions::ObjectStreams::generate, .configure = [&progress](QPDFWriter& writer) {
                  writer.registerProgressReporter(std::make_shared<QPDFWriter::FunctionProgressReporter>(
                      [&progress](int percentage) { progress(percentage / 100.0); }));
              }});
}

}  // namespace wendrel
