#include "PagesOnAllCores.h"

#include "PdfPageRenderer.h"
#include "operations/OperationContext.h"

#include <QThread>

#include <algorithm>
#include <atomic>
#include <exception>
#include <mutex>
#include <thread>
#include <vector>

namespace wendrel {

void forEachPageOnAllCores(const PdfPageRenderer& first, const OperationContext& context,
                           const std::function<void(const PdfPageRenderer& renderer, int pageIndex)>& pageWork,
                           const std::function<void(double fraction)>& progress)
{
    const int pageCount = first.pageCount();
    const int workerCount = std::clamp(QThread::idealThreadCount(), 1, std::max(1, pageCount));
    std::vector<PdfPageRenderer> others;
    others.reserve(size_t(workerCount - 1));
    for (int worker = 1; worker < workerCount; ++worker)
        others.push_back(first.reopened());

    std::atomic<int> nextPage{0};
    std::atomic<int> pagesDone{0};
    std::exception_ptr failure;
    std::mutex failureMutex;
    const auto work = [&](const PdfPageRenderer& renderer) {
        try {
            for (int page = nextPage++; page < pageCount; page = nextPage++) {
                context.throwIfCancelled();
                pageWork(renderer, page);
                if (progress)
                    progress(double(++pagesDone) / pageCount);
            }
        } catch (...) {
            const std::lock_guard lock(failureMutex);
            if (!failure)
                failure = std::current_exception();
            nextPage = pageCount;  // the others stop before their next page
        }
    };
    {
        std::vector<std::jthread> threads;
        for (const PdfPageRenderer& renderer : others)
            threads.emplace_back(work, std::cref(renderer));
        work(first);  // this thread is one of the workers
    }
    if (failure)
        std::rethrow_exception(failure);
}

}  // namespace wendrel
