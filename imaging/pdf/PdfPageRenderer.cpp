#include "PdfPageRenderer.h"

#include "PdfDocument.h"
#include "PdfPageGeometry.h"
#include "imaging/VipsRuntime.h"
#include "operations/Logging.h"
#include "operations/OperationError.h"

#include <QFile>
#include <QRectF>

#include <cairo.h>
#include <poppler.h>
#include <vips/vips8>

#include <qpdf/QPDFPageDocumentHelper.hh>
#include <qpdf/QPDFPageObjectHelper.hh>

#include <mutex>
#include <set>

namespace wendrel {

// What every renderer of one document shares: the file poppler draws from and each page's
// geometry, read once.
struct PdfRenderSource {
    struct Page {
        QSizeF mediaBox;  // points, unrotated
        int rotation = 0;
    };
    QString drawnPath;  // the document itself, or its copy without crop boxes
    QList<Page> pages;
};

namespace {

using vips::VImage;

// What a page without a valid media box is, to poppler as to every reader: US Letter.
constexpr QRectF defaultMediaBox(0, 0, 612, 792);

OperationError pageTooLarge() { return OperationError(pdfText("Page is too large")); }

std::optional<QRectF> boxOf(QPDFObjectHandle box)
{
    if (!box.isRectangle())
        return std::nullopt;
    const QPDFObjectHandle::Rectangle r = box.getArrayAsRectangle();
    return QRectF(QPointF(r.llx, r.lly), QPointF(r.urx, r.ury)).normalized();
}

int rotationOf(QPDFPageObjectHelper& page)
{
    QPDFObjectHandle rotate = page.getAttribute("/Rotate", false);
    return rotate.isInteger() ? normalisedRotation(int(rotate.getIntValue() % 360)) : 0;
}

// Whether a viewer would show less of the page than its media box: a crop box that, cut to
// the media box as readers cut it, is smaller.
bool isCropped(QPDFPageObjectHelper& page, const QRectF& mediaBox)
{
    const std::optional<QRectF> crop = boxOf(page.getAttribute("/CropBox", false));
    return crop && crop->intersected(mediaBox) != mediaBox;
}

// poppler draws the crop box of a page and nothing else. The copy it is given instead has
// every /CropBox taken off, from the pages and from the page-tree nodes they inherit from, so
// it draws the media box; the copy lives in the job's scratch folder and goes with it.
QString copyWithoutCropBoxes(QPDF& pdf, const OperationContext& context)
{
    std::set<QPDFObjGen> cleared;
    for (QPDFPageObjectHelper& page : QPDFPageDocumentHelper(pdf).getAllPages()) {
        for (QPDFObjectHandle node = page.getObjectHandle(); node.isDictionary(); node = node.getKey("/Parent")) {
            if (!cleared.insert(node.getObjGen()).second)
                break;  // this node and those above it are done (a loop in the tree ends here too)
            node.removeKey("/CropBox");
        }
    }
    const QString path = context.outputUrl(QStringLiteral("uncropped.pdf"));
    try {
        writePdf(pdf, path);
    } catch (const OperationError&) {
        // The document opened but some object of it can't be read back.
        throw pdfCantOpen();
    }
    return path;
}

std::shared_ptr<const PdfRenderSource> prepare(const QString& path, const OperationContext& context)
{
    const std::unique_ptr<QPDF> pdf = openPdf(path);
    auto source = std::make_shared<PdfRenderSource>();
    source->drawnPath = path;
    bool anyCropped = false;
    try {
        for (QPDFPageObjectHelper& page : QPDFPageDocumentHelper(*pdf).getAllPages()) {
            const QRectF mediaBox = boxOf(page.getAttribute("/MediaBox", false)).value_or(defaultMediaBox);
            source->pages.append({mediaBox.size(), rotationOf(page)});
            anyCropped = anyCropped || isCropped(page, mediaBox);
        }
        if (anyCropped)
            source->drawnPath = copyWithoutCropBoxes(*pdf, context);
    } catch (const OperationError&) {
        throw;
    } catch (const std::exception& error) {
        qCInfo(lcJobs) << "pdf pages unreadable:" << path << error.what();
        throw pdfCantOpen();
    }
    return source;
}

// The pixels cairo drew (32 bits a pixel, blue first in memory on this little-endian machine)
// packed in place into 8-bit RGB: each pixel moves to a lower address than it is read from.
void packBgrxToRgb(unsigned char* pixels, qint64 count)
{
    for (qint64 i = 0; i < count; ++i) {
        const unsigned char* from = pixels + 4 * i;
        unsigned char* to = pixels + 3 * i;
        const unsigned char blue = from[0], green = from[1], red = from[2];
        to[0] = red;
        to[1] = green;
        to[2] = blue;
    }
}

void freePixels(VipsImage*, void* pixels) { g_free(pixels); }

}  // namespace

struct PdfPageRenderer::Poppler {
    explicit Poppler(const QString& path)
    {
        // poppler makes its global settings on the first open, unguarded: opens take turns.
        static std::mutex opening;
        const std::lock_guard lock(opening);
        GError* error = nullptr;
        gchar* uri = g_filename_to_uri(QFile::encodeName(path).constData(), nullptr, &error);
        if (uri)
            document = poppler_document_new_from_file(uri, nullptr, &error);
        g_free(uri);
        if (!document) {
            qCInfo(lcJobs) << "poppler can't open:" << path << (error ? error->message : "");
            const bool locked = error && error->domain == POPPLER_ERROR && error->code == POPPLER_ERROR_ENCRYPTED;
            g_clear_error(&error);
            throw locked ? OperationError(pdfText("This PDF is password-protected")) : pdfCantOpen();
        }
    }
    ~Poppler() { g_object_unref(document); }
    Poppler(const Poppler&) = delete;
    Poppler& operator=(const Poppler&) = delete;

    PopplerDocument* document = nullptr;
};

PdfPageRenderer::PdfPageRenderer(const QString& path, const OperationContext& context)
    : PdfPageRenderer(prepare(path, context), context)
{
}

PdfPageRenderer::PdfPageRenderer(std::shared_ptr<const PdfRenderSource> source, const OperationContext& context)
    : m_source(std::move(source)), m_poppler(std::make_unique<Poppler>(m_source->drawnPath)), m_context(context)
{
    // Both readers must see the same pages, or page numbers would not mean the same page.
    if (poppler_document_get_n_pages(m_poppler->document) != m_source->pages.size()) {
        qCInfo(lcJobs) << "poppler and qpdf disagree on the page count:" << m_source->drawnPath;
        throw pdfCantOpen();
    }
}

PdfPageRenderer::~PdfPageRenderer() = default;
PdfPageRenderer::PdfPageRenderer(PdfPageRenderer&&) noexcept = default;
PdfPageRenderer& PdfPageRenderer::operator=(PdfPageRenderer&&) noexcept = default;

PdfPageRenderer PdfPageRenderer::reopened() const { return PdfPageRenderer(m_source, m_context); }

int PdfPageRenderer::pageCount() const { return int(m_source->pages.size()); }

QSizeF PdfPageRenderer::displayedPageSize(int pageIndex) const
{
    const PdfRenderSource::Page& page = m_source->pages.at(pageIndex);
    return displayedSize(page.mediaBox, page.rotation);
}

QSize PdfPageRenderer::pixelSize(int pageIndex, double dpi) const
{
    const PdfRenderSource::Page& page = m_source->pages.at(pageIndex);
    const std::optional<QSize> size = renderedPixelSize(page.mediaBox, page.rotation, dpi);
    if (!size)
        throw pageTooLarge();
    return *size;
}

VImage PdfPageRenderer::render(int pageIndex, double dpi) const
{
    startVips();
    const QSize size = pixelSize(pageIndex, dpi);
    const qint64 pixelCount = qint64(size.width()) * size.height();
    // cairo's bitmap, four bytes a pixel, is the picture's memory: it is packed in place.
    const auto memory = m_context.reserveMemory(4 * pixelCount);
    auto* pixels = static_cast<unsigned char*>(g_try_malloc(size_t(4 * pixelCount)));
    if (!pixels)
        throw pageTooLarge();

    cairo_surface_t* surface =
        cairo_image_surface_create_for_data(pixels, CAIRO_FORMAT_RGB24, size.width(), size.height(), 4 * size.width());
    cairo_t* cairo = cairo_create(surface);
    cairo_set_source_rgb(cairo, 1, 1, 1);
    cairo_paint(cairo);
    cairo_scale(cairo, dpi / 72, dpi / 72);
    PopplerPage* page = poppler_document_get_page(m_poppler->document, pageIndex);
    if (page) {
        // poppler applies the page's own /Rotate: its drawing fills the displayed size.
        poppler_page_render(page, cairo);
        g_object_unref(page);
    }
    const cairo_status_t status = cairo_status(cairo);
    cairo_destroy(cairo);
    cairo_surface_finish(surface);
    cairo_surface_destroy(surface);
    if (!page || status != CAIRO_STATUS_SUCCESS) {
        g_free(pixels);
        qCInfo(lcJobs) << "page not drawn:" << pageIndex << (page ? cairo_status_to_string(status) : "no page");
        throw status == CAIRO_STATUS_NO_MEMORY ? pageTooLarge() : pdfCantOpen();
    }

    packBgrxToRgb(pixels, pixelCount);
    // Giving back the unused quarter is cheap: large blocks shrink where they are.
    pixels = static_cast<unsigned char*>(g_realloc(pixels, size_t(3 * pixelCount)));
    VImage image = VImage::new_from_memory(pixels, size_t(3 * pixelCount), size.width(), size.height(), 3,
                                           VIPS_FORMAT_UCHAR);
    g_signal_connect(image.get_image(), "postclose", G_CALLBACK(freePixels), pixels);
    const double pixelsPerMillimetre = dpi / 25.4;
    return image.copy(VImage::option()
                          ->set("interpretation", VIPS_INTERPRETATION_sRGB)
                          ->set("xres", pixelsPerMillimetre)
                          ->set("yres", pixelsPerMillimetre));
}

}  // namespace wendrel
