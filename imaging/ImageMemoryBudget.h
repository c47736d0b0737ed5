#pragma once

#include <QString>

#include <condition_variable>
#include <mutex>

namespace wendrel {

// Keeps the pictures being worked on at once within a budget of pixels, so a batch of very
// large pictures takes no more memory than the largest one alone, however many files it has
// and however many run side by side. A picture larger than the whole budget waits until it
// can have it to itself.
class ImageMemoryBudget {
public:
    // A share of the budget, returned when it goes out of scope.
    class Reservation {
    public:
        Reservation(ImageMemoryBudget& budget, qint64 pixels);
        ~Reservation();
        Reservation(const Reservation&) = delete;
        Reservation& operator=(const Reservation&) = delete;

    private:
        ImageMemoryBudget& m_budget;
        qint64 m_pixels;
    };

    explicit ImageMemoryBudget(qint64 pixels) : m_capacity(pixels) {}

    // The budget all image operations share: 64 megapixels, two large photos at a time.
    static ImageMemoryBudget& shared();

    // Reserves room for the picture at `path`, by its size in the header; a file whose header
    // can't be read reserves nothing (its loading fails soon after anyway).
    static Reservation forFile(const QString& path);

    qint64 inUse() const;

private:
    qint64 acquire(qint64 pixels);
    void release(qint64 pixels);

    const qint64 m_capacity;
    qint64 m_inUse = 0;
    mutable std::mutex m_mutex;
    std::condition_variable m_returned;
};

}  // namespace wendrel
