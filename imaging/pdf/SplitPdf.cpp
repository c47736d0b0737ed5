#include "SplitPdf.h"

#include "PdfDocument.h"
#include "operations/FileNames.h"
#include "operations/Logging.h"
#include "operations/OperationCatalog.h"

#include <QDir>
#include <QThread>

#include <qpdf/QPDFPageDocumentHelper.hh>

#include <algorithm>
#include <atomic>
#include <exception>
#include <mutex>
#include <set>
#include <thread>
#include <vector>

namespace wendrel {

namespace {

// Below this many pages per thread, reading the source once more costs more than it saves.
constexpr int pagesPerExtraThread = 16;

// What one more reading of the source holds while it lasts: finding the pages parses about
// every object, some 4 KB each (230 MB for the 59,000 objects of a 2,400-page manual).
constexpr qint64 bytesPerObject = 4096;
// Extra readings stay within this: a long document is split on one thread rather than holding
// its whole structure several times over.
constexpr qint64 extraReadingsBudget = 64'000'000;

// The threads for a source of `pageCount` pages and `objectCount` objects.
int splitThreads(int pageCount, size_t objectCount)
{
    const qint64 readingBytes = std::max<qint64>(1, qint64(objectCount) * bytesPerObject);
    const qint64 extra = std::min<qint64>({QThread::idealThreadCount() - 1, pageCount / pagesPerExtraThread - 1,
                                           extraReadingsBudget / readingBytes});
    return 1 + int(std::max<qint64>(0, extra));
}

// Whether a page copied alone would drag along what other pages draw with: its resources are
// inherited from the page tree, or it shares its resource, font or picture dictionary with
// another page. Such pages are trimmed to what their own content uses before they are copied;
// the check is cheap, the trimming is not (it reads every page's content).
bool pagesShareResources(QPDF& pdf)
{
    const std::vector<QPDFPageObjectHelper> pages = QPDFPageDocumentHelper(pdf).getAllPages();
    if (pages.size() < 2)
        return false;
    std::set<QPDFObjGen> seen;
    const auto seenBefore = [&](QPDFObjectHandle object) {
        return object.isIndirect() && !seen.insert(object.getObjGen()).second;
    };
    for (QPDFPageObjectHelper page : pages) {
        QPDFObjectHandle own = page.getObjectHandle().getKey("/Resources");
        if (!own.isDictionary())
            return page.getAttribute("/Resources", false).isDictionary();
        if (seenBefore(own) || seenBefore(own.getKey("/Font")) || seenBefore(own.getKey("/XObject")))
            return true;
    }
    return false;
}

// One page as a document of its own. Links and other references to pages that aren't copied
// become null rather than bringing those pages along.
void writeSinglePage(QPDFPageObjectHelper page, bool trimResources, const QString& path)
{
    QPDF single;
    single.setSuppressWarnings(true);
    try {
        if (trimResources)
            page.removeUnreferencedResources();
        single.emptyPDF();
        QPDFPageDocumentHelper(single).addPage(page, false);
    } catch (const std::exception& error) {
        qCInfo(lcJobs) << "pdf page not copied:" << path << error.what();
        throw pdfCouldNotSave();
    }
    writePdf(single, path);
}

// The pages of one source shared out to threads: each takes the next page not yet taken, so
// a slow page holds up nobody. The first failure stops every thread after its current page.
class PageSplitter {
public:
    PageSplitter(QString source, QString folder, int pageCount, bool trimResources, const OperationContext& context)
        : m_source(std::move(source)),
          m_folder(std::move(folder)),
          m_pageCount(pageCount),
          m_trimResources(trimResources),
          m_context(context)
    {
    }

    // Runs on the calling thread with `pdf` and on `extraThreads` more, each with its own reading.
    void run(QPDF& pdf, int extraThreads)
    {
        {
            std::vector<std::jthread> threads;
            for (int index = 0; index < extraThreads; ++index)
                threads.emplace_back([this] { guarded([this] { writePages(*openPdf(m_source)); }); });
            guarded([&] { writePages(pdf); });
        }
        if (m_failure)
            std::rethrow_exception(m_failure);
        m_context.throwIfCancelled();
    }

private:
    void guarded(const std::function<void()>& work)
    {
        try {
            work();
        } catch (...) {
            const std::scoped_lock lock(m_failureMutex);
            if (!m_failure)
                m_failure = std::current_exception();
            m_stopped = true;
        }
    }

    void writePages(QPDF& pdf)
    {
        const std::vector<QPDFPageObjectHelper> pages = QPDFPageDocumentHelper(pdf).getAllPages();
        // The file changed between two readings: its pages can't be trusted to match.
        if (int(pages.size()) != m_pageCount)
            throw pdfCantOpen();
        for (;;) {
            if (m_stopped || m_context.isCancelled())
                return;
            const int index = m_nextPage++;
            if (index >= m_pageCount)
                return;
            writeSinglePage(pages[size_t(index)], m_trimResources,
                            m_folder + u'/' + splitPageFileName(index + 1, m_pageCount));
            m_context.progress(double(++m_written) / m_pageCount);
        }
    }

    const QString m_source;
    const QString m_folder;
    const int m_pageCount;
    const bool m_trimResources;
    const OperationContext& m_context;
    std::atomic_int m_nextPage{0};
    std::atomic_int m_written{0};
    std::atomic_bool m_stopped{false};
    std::mutex m_failureMutex;
    std::exception_ptr m_failure;
};

void writeEveryPage(QPDF& pdf, const QString& source, const QString& folder, const OperationContext& context)
{
    int pageCount = 0;
    bool trimResources = false;
    try {
        pageCount = int(QPDFPageDocumentHelper(pdf).getAllPages().size());
        trimResources = pagesShareResources(pdf);
    } catch (const std::exception& error) {
        qCInfo(lcJobs) << "pdf pages unreadable:" << source << error.what();
        throw pdfCantOpen();
    }
    const int threads = splitThreads(pageCount, pdf.getObjectCount());
    qCInfo(lcJobs) << "splitting" << pageCount << "pages on" << threads << "threads"
                   << (trimResources ? "trimming shared resources" : "");
    PageSplitter(source, folder, pageCount, trimResources, context).run(pdf, threads - 1);
}

ProducedFile splitPdf(const QString& path, const OperationContext& context)
{
    const std::unique_ptr<QPDF> pdf = openPdf(path);
    return context.produce(path, outputName(path, pdfText("Pages"), QString()), [&](const QString& folder) {
        if (!QDir().mkpath(folder))
            throw pdfCouldNotSave();
        writeEveryPage(*pdf, path, folder, context);
    });
}

}  // namespace

QString splitPageFileName(int pageNumber, int pageCount)
{
    const int digits = std::max(3, int(QString::number(pageCount).size()));
    return pdfText("Page %1.pdf").arg(pageNumber, digits, 10, QLatin1Char('0'));
}

void splitPdfInto(const QString& source, const QString& folder, const OperationContext& context)
{
    writeEveryPage(*openPdf(source), source, folder, context);
}

void registerSplitPdf(OperationCatalog& catalog)
{
    catalog.add(Op::make(pdfEntry({.id = "pdf.split", .title = pdfText("Split Pages"),
                                   .symbol = QStringLiteral("square.split.2x1"), .ring = RingKind::tools,
                                   .description = pdfText("Every page as its own PDF, in a folder.")},
                                  splitPdf)));
}

}  // namespace wendrel
