#pragma once

#include "operations/OperationContext.h"

#include <QList>
#include <QSize>
#include <QSizeF>
#include <QString>

#include <memory>

namespace vips {
class VImage;
}

namespace wendrel {

struct PdfRenderSource;

// Draws the pages of one PDF as pictures. A page is its media box (what the page is, not the
// part a viewer crops it to), drawn with its own rotation onto opaque white.
//
// Not thread-safe, by design: a renderer holds one opened document and draws one page at a
// time. Threads that draw pages side by side each take a renderer of their own (`reopened`).
class PdfPageRenderer {
public:
    // Opens the document for the job `context` belongs to. Throws OperationError "Can't open
    // this PDF" or "This PDF is password-protected".
    PdfPageRenderer(const QString& path, const OperationContext& context);
    ~PdfPageRenderer();
    PdfPageRenderer(PdfPageRenderer&&) noexcept;
    PdfPageRenderer& operator=(PdfPageRenderer&&) noexcept;

    // The same document opened once more, for another thread; its checks are not repeated.
    PdfPageRenderer reopened() const;

    int pageCount() const;

    // The picture's size at `dpi`, after rotation. Throws OperationError "Page is too large"
    // when it exceeds the bitmap limits (PdfPageGeometry.h).
    QSize pixelSize(int pageIndex, double dpi) const;

    // The page as it is seen, in points: the media box, width and height exchanged at 90/270.
    QSizeF displayedPageSize(int pageIndex) const;

    // The page at `dpi`: 8-bit sRGB, 3 bands, opaque, its resolution recorded. The pixels are
    // in memory; their bytes are reserved from the shared budget while drawing, so call it
    // without holding a reservation of your own. Throws "Page is too large", or "Can't open
    // this PDF" when the page can't be drawn at all.
    vips::VImage render(int pageIndex, double dpi) const;

private:
    PdfPageRenderer(std::shared_ptr<const PdfRenderSource> source, const OperationContext& context);

    std::shared_ptr<const PdfRenderSource> m_source;
    struct Poppler;
    std::unique_ptr<Poppler> m_poppler;
    OperationContext m_context;
};

}  // namespace wendrel
