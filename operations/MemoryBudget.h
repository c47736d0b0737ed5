#pragma once

#include <QtGlobal>

#include <condition_variable>
#include <mutex>

namespace wendrel {

// Keeps the memory that files being worked on at once take within a budget, so a batch of very
// large pictures needs no more than the largest one alone, however many files it has and
// however many run side by side. A file larger than the whole budget waits until it can have
// it to itself.
class MemoryBudget {
public:
    // A share of the budget, returned when it goes out of scope.
    class Reservation {
    public:
        Reservation(MemoryBudget& budget, qint64 bytes);
        ~Reservation();
        Reservation(const Reservation&) = delete;
        Reservation& operator=(const Reservation&) = delete;

    private:
        MemoryBudget& m_budget;
        qint64 m_bytes;
    };

    explicit MemoryBudget(qint64 bytes) : m_capacity(bytes) {}

    // The budget every job shares: 256 MB, two large photos decoded at a time.
    static MemoryBudget& shared();

    qint64 inUse() const;

private:
    qint64 acquire(qint64 bytes);
    void release(qint64 bytes);

    const qint64 m_capacity;
    qint64 m_inUse = 0;
    mutable std::mutex m_mutex;
    std::condition_variable m_returned;
};

}  // namespace wendrel
