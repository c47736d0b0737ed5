#include "MemoryBudget.h"

#include <algorithm>

#include <malloc.h>

namespace wendrel {

MemoryBudget::Reservation::Reservation(MemoryBudget& budget, qint64 bytes)
    : m_budget(budget), m_bytes(budget.acquire(bytes))
{
}

MemoryBudget::Reservation::~Reservation()
{
    m_budget.release(m_bytes);
    // The allocator keeps freed blocks for the thread that used them; after a very large
    // file, hand them back, or each worker thread would hold a file's worth for good.
    if (m_bytes >= 64'000'000)
        malloc_trim(0);
}

MemoryBudget& MemoryBudget::shared()
{
    static MemoryBudget budget(256'000'000);
    return budget;
}

qint64 MemoryBudget::inUse() const
{
    std::lock_guard lock(m_mutex);
    return m_inUse;
}

qint64 MemoryBudget::acquire(qint64 bytes)
{
    const qint64 wanted = std::clamp<qint64>(bytes, 0, m_capacity);
    std::unique_lock lock(m_mutex);
    m_returned.wait(lock, [&] { return m_inUse + wanted <= m_capacity; });
    m_inUse += wanted;
    return wanted;
}

void MemoryBudget::release(qint64 bytes)
{
    {
        std::lock_guard lock(m_mutex);
        m_inUse -= bytes;
    }
    m_returned.notify_all();
}

}  // namespace wendrel
