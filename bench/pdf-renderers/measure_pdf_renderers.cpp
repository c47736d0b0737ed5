// Renders the same PDF pages at one resolution with one of the renderers Debian ships and
// prints the time per page (wall clock, and processor time, which a busy machine disturbs
// less) and the process's peak memory, so each renderer is measured in a process of its own. Every renderer draws onto an opaque white bitmap, as Wendrel needs.
//
// Usage: measure_pdf_renderers RENDERER PDF FIRST LAST DPI THREADS
//   RENDERER: poppler-cpp (Splash), poppler-glib (cairo) or vips (pdfload)
//   THREADS:  workers, each with its own opened document, taking pages in turn

#include <poppler-document.h>
#include <poppler-page-renderer.h>
#include <poppler-page.h>
#include <poppler.h>
#include <cairo.h>
#include <vips/vips8>

#include <sys/resource.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <memory>
#include <string>
#include <thread>
#include <vector>

namespace {

// A checksum of a bitmap's bytes, printed so no renderer's work can be skipped.
std::atomic<unsigned long long> checksum{0};

void consume(const unsigned char* data, size_t size)
{
    unsigned long long sum = 0;
    for (size_t i = 0; i < size; i += 4096)
        sum += data[i];
    checksum += sum;
}

using PageFunction = std::function<void(int page)>;
// Makes one worker's page function: opens the document once for that worker.
using WorkerFactory = std::function<PageFunction()>;

WorkerFactory popplerCpp(const std::string& path, double dpi)
{
    return [path, dpi] {
        std::shared_ptr<poppler::document> document(poppler::document::load_from_file(path));
        if (!document)
            std::exit(2);
        auto renderer = std::make_shared<poppler::page_renderer>();
        renderer->set_render_hints(poppler::page_renderer::antialiasing | poppler::page_renderer::text_antialiasing);
        renderer->set_image_format(poppler::image::format_rgb24);
        renderer->set_paper_color(0xffffffff);
        return PageFunction([document, renderer, dpi](int page) {
            std::unique_ptr<poppler::page> p(document->create_page(page));
            const poppler::image image = renderer->render_page(p.get(), dpi, dpi);
            consume(reinterpret_cast<const unsigned char*>(image.const_data()),
                    size_t(image.bytes_per_row()) * size_t(image.height()));
        });
    };
}

WorkerFactory popplerGlib(const std::string& path, double dpi)
{
    return [path, dpi] {
        gchar* uri = g_filename_to_uri(path.c_str(), nullptr, nullptr);
        std::shared_ptr<PopplerDocument> document(poppler_document_new_from_file(uri, nullptr, nullptr), g_object_unref);
        g_free(uri);
        if (!document)
            std::exit(2);
        return PageFunction([document, dpi](int index) {
            PopplerPage* page = poppler_document_get_page(document.get(), index);
            double width = 0, height = 0;
            poppler_page_get_size(page, &width, &height);
            const double scale = dpi / 72;
            cairo_surface_t* surface = cairo_image_surface_create(CAIRO_FORMAT_RGB24, int(width * scale + 0.5),
                                                                  int(height * scale + 0.5));
            cairo_t* cr = cairo_create(surface);
            cairo_set_source_rgb(cr, 1, 1, 1);
            cairo_paint(cr);
            cairo_scale(cr, scale, scale);
            poppler_page_render(page, cr);
            cairo_destroy(cr);
            cairo_surface_flush(surface);
            consume(cairo_image_surface_get_data(surface),
                    size_t(cairo_image_surface_get_stride(surface)) * size_t(cairo_image_surface_get_height(surface)));
            cairo_surface_destroy(surface);
            g_object_unref(page);
        });
    };
}

WorkerFactory vipsPdfload(const std::string& path, double dpi)
{
    return [path, dpi] {
        return PageFunction([path, dpi](int page) {
            const vips::VImage image = vips::VImage::pdfload(
                path.c_str(), vips::VImage::option()->set("page", page)->set("dpi", dpi)->set("access", VIPS_ACCESS_SEQUENTIAL));
            const vips::VImage flat = image.flatten(vips::VImage::option()->set("background", std::vector<double>{255, 255, 255}))
                                          .cast(VIPS_FORMAT_UCHAR)
                                          .copy_memory();
            size_t size = 0;
            const void* data = flat.data();
            size = VIPS_IMAGE_SIZEOF_IMAGE(flat.get_image());
            consume(static_cast<const unsigned char*>(data), size);
        });
    };
}

}  // namespace

int main(int argc, char** argv)
{
    if (argc != 7) {
        std::fprintf(stderr, "usage: %s RENDERER PDF FIRST LAST DPI THREADS\n", argv[0]);
        return 2;
    }
    const std::string renderer = argv[1];
    const std::string path = argv[2];
    const int first = std::atoi(argv[3]), last = std::atoi(argv[4]);
    const double dpi = std::atof(argv[5]);
    const int threads = std::max(1, std::atoi(argv[6]));

    if (VIPS_INIT(argv[0]))
        return 2;
    // Each renderer runs on the workers alone; libvips must not add threads of its own.
    vips_concurrency_set(1);
    WorkerFactory factory = renderer == "poppler-cpp"    ? popplerCpp(path, dpi)
                            : renderer == "poppler-glib" ? popplerGlib(path, dpi)
                            : renderer == "vips"         ? vipsPdfload(path, dpi)
                                                         : WorkerFactory{};
    if (!factory) {
        std::fprintf(stderr, "unknown renderer %s\n", renderer.c_str());
        return 2;
    }

    std::atomic<int> next{first - 1};  // zero-based pages FIRST-1 .. LAST-1
    const auto start = std::chrono::steady_clock::now();
    std::vector<std::thread> workers;
    for (int i = 0; i < threads; ++i) {
        workers.emplace_back([&] {
            const PageFunction render = factory();
            for (int page = next++; page < last; page = next++)
                render(page);
        });
    }
    for (std::thread& worker : workers)
        worker.join();
    const double seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();

    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    const int pages = last - first + 1;
    const double cpuSeconds = double(usage.ru_utime.tv_sec + usage.ru_stime.tv_sec)
                              + double(usage.ru_utime.tv_usec + usage.ru_stime.tv_usec) / 1e6;
    std::printf("%-13s %d thread(s)  %7.1f ms/page  %7.1f CPU ms/page  %5.0f MB peak  (checksum %llu)\n",
                renderer.c_str(), threads, 1000 * seconds / pages, 1000 * cpuSeconds / pages,
                double(usage.ru_maxrss) / 1024, checksum.load());
    return 0;
}
