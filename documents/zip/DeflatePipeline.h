#pragma once

#include <QByteArray>

#include <condition_variable>
#include <exception>
#include <functional>
#include <map>
#include <mutex>
#include <thread>
#include <vector>

namespace wendrel {

// Compresses the pieces of a ZIP archive's entries on several threads, a bounded distance ahead
// of the one writer that takes the results in order.
//
// Each piece is read and compressed on its own, primed with the bytes before it, so the results
// are the same whatever the number of threads. Memory stays bounded: threads stop claiming
// pieces while the input already claimed and not yet taken passes the budget.
class DeflatePipeline {
public:
    struct Piece {
        size_t entry = 0;      // the caller's index of the entry it belongs to
        qint64 offset = 0;     // where it starts in the entry's contents
        qint64 length = 0;
        bool last = false;     // ends the entry's DEFLATE stream
        bool keepInput = false;  // hand the raw bytes back too (to store them if they don't shrink)
    };

    struct Result {
        QByteArray compressed;
        QByteArray input;  // only when the piece asked to keep it
        quint32 crc = 0;   // of the piece's raw bytes
    };

    // Returns the bytes of the piece's entry from `offset - history` to the piece's end, or
    // throws (OperationError) when they can't be read. Called on the pipeline's threads.
    using ReadFunction = std::function<QByteArray(const Piece& piece, qint64 history)>;

    DeflatePipeline(std::vector<Piece> pieces, ReadFunction read, int threads, qint64 budgetBytes);
    ~DeflatePipeline();  // stops the threads; pieces not yet taken are dropped
    DeflatePipeline(const DeflatePipeline&) = delete;
    DeflatePipeline& operator=(const DeflatePipeline&) = delete;

    // The next piece's result, in the order given, waiting for it if needed. Rethrows the
    // error its reading or compression raised.
    Result take();

private:
    struct Slot {
        Result result;
        std::exception_ptr error;
    };

    void work();
    void stop();
    bool mayClaim() const;

    const std::vector<Piece> m_pieces;
    const ReadFunction m_read;
    const qint64 m_budget;

    std::mutex m_mutex;
    std::condition_variable m_claimable;
    std::condition_variable m_finished;
    size_t m_nextToClaim = 0;
    size_t m_nextToTake = 0;
    qint64 m_claimedBytes = 0;  // claimed and not yet taken
    bool m_stopping = false;
    std::map<size_t, Slot> m_done;

    std::vector<std::jthread> m_threads;  // last: they start once everything above exists
};

}  // namespace wendrel
