#include "ImageMemoryBudget.h"

#include "ImageLoader.h"
#include "operations/OperationError.h"

#include <algorithm>

#include <malloc.h>

namespace wendrel {

ImageMemoryBudget::Reservation::Reservation(ImageMemoryBudget& budget, qint64 pixels)
    : m_budget(budget), m_pixels(budget.acquire(pixels))
{
}

ImageMemoryBudget::Reservation::~Reservation()
{
    m_budget.release(m_pixels);
    // The allocator keeps freed blocks for the thread that used them; after a very large
    // picture, hand them back, or each worker thread would hold a picture's worth for good.
    if (m_pixels >= 16'000'000)
        malloc_trim(0);
}

ImageMemoryBudget& ImageMemoryBudget::shared()
{
    static ImageMemoryBudget budget(64'000'000);
    return budget;
}

ImageMemoryBudget::Reservation ImageMemoryBudget::forFile(const QString& path)
{
    qint64 pixels = 0;
    try {
        const QSize size = uprightImageSize(path);
        pixels = qint64(size.width()) * size.height();
    } catch (const OperationError&) {
    }
    return Reservation(shared(), pixels);
}

qint64 ImageMemoryBudget::inUse() const
{
    std::lock_guard lock(m_mutex);
    return m_inUse;
}

qint64 ImageMemoryBudget::acquire(qint64 pixels)
{
    const qint64 wanted = std::clamp<qint64>(pixels, 0, m_capacity);
    std::unique_lock lock(m_mutex);
    m_returned.wait(lock, [&] { return m_inUse + wanted <= m_capacity; });
    m_inUse += wanted;
    return wanted;
}

void ImageMemoryBudget::release(qint64 pixels)
{
    {
        std::lock_guard lock(m_mutex);
        m_inUse -= pixels;
    }
    m_returned.notify_all();
}

}  // namespace wendrel
