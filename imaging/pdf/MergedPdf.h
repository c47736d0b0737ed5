#pragma once

#include "ImagesToPdf.h"
#include "MergedDestinations.h"
#include "MergedOutline.h"
#include "MergedPageLabels.h"
#include "PdfDocument.h"

#include <QString>

#include <functional>
#include <memory>
#include <vector>

namespace wendrel {

// One document built from several, in the order they are added: every page of each PDF, a
// page per picture, and what readers navigate by — each source's bookmarks under an entry
// named after it, its links and named destinations, its page labels — moved with its pages.
//
// Pages are copied, never rendered: a copied page's streams are read from its source only
// while writing, so the sources stay open until then and memory holds structure, not content.
class MergedPdf {
public:
    MergedPdf();

    // Appends every page of `source`. `title` names its bookmark entry. Throws OperationError
    // "Can't open this PDF" when a page can't be read.
    void appendDocument(std::unique_ptr<QPDF> source, const QString& title);

    // Appends a page showing `picture`.
    void appendPicture(const PdfPicture& picture, const QString& title);

    // Writes the document, reporting the writer's progress from 0 to 1. Throws "Couldn't save
    // the PDF".
    void write(const QString& path, const std::function<void(double)>& progress);

private:
    std::vector<QPDFObjectHandle> copyPages(QPDF& source);

    QPDF m_pdf;
    std::vector<std::unique_ptr<QPDF>> m_sources;
    MergedOutline m_outline;
    MergedDestinations m_destinations;
    MergedPageLabels m_labels;
};

}  // namespace wendrel
