#include "DeflatePipeline.h"

#include "Crc32.h"
#include "RawDeflate.h"

#include <algorithm>
#include <memory>

namespace wendrel {

DeflatePipeline::DeflatePipeline(std::vector<Piece> pieces, ReadFunction read, int threads,
                                 qint64 budgetBytes)
    : m_pieces(std::move(pieces)), m_read(std::move(read)), m_budget(budgetBytes)
{
    const size_t count = std::min(m_pieces.size(), static_cast<size_t>(std::max(1, threads)));
    try {
        for (size_t index = 0; index < count; ++index)
            m_threads.emplace_back([this] { work(); });
    } catch (...) {
        stop();  // threads already started would otherwise wait for a writer that never comes
        throw;
    }
}

DeflatePipeline::~DeflatePipeline() { stop(); }

void DeflatePipeline::stop()
{
    {
        const std::lock_guard lock(m_mutex);
        m_stopping = true;
    }
    m_claimable.notify_all();
    m_threads.clear();  // joins
}

bool DeflatePipeline::mayClaim() const
{
    if (m_stopping || m_nextToClaim >= m_pieces.size())
        return true;  // nothing to wait for: the thread ends
    // The piece the writer waits for is always claimable, however large; others only within
    // the budget.
    return m_nextToClaim == m_nextToTake
           || m_claimedBytes + m_pieces[m_nextToClaim].length <= m_budget;
}

void DeflatePipeline::work()
{
    std::unique_ptr<RawDeflater> deflater;  // made on the first piece, where a failure can be reported
    std::unique_lock lock(m_mutex);
    for (;;) {
        m_claimable.wait(lock, [this] { return mayClaim(); });
        if (m_stopping || m_nextToClaim >= m_pieces.size())
            return;
        const size_t index = m_nextToClaim++;
        const Piece& piece = m_pieces[index];
        m_claimedBytes += piece.length;
        lock.unlock();

        Slot slot;
        try {
            const qint64 history = std::min<qint64>(piece.offset, RawDeflater::windowSize);
            const QByteArray bytes = m_read(piece, history);
            const QByteArrayView before = QByteArrayView(bytes).first(history);
            const QByteArrayView input = QByteArrayView(bytes).sliced(history);
            if (!deflater)
                deflater = std::make_unique<RawDeflater>();
            slot.result.crc = crc32(input);
            slot.result.compressed = deflater->compress(before, input, piece.last);
            if (piece.keepInput)
                slot.result.input = bytes.sliced(history);
        } catch (...) {
            slot.error = std::current_exception();
        }

        lock.lock();
        m_done.emplace(index, std::move(slot));
        m_finished.notify_all();
    }
}

DeflatePipeline::Result DeflatePipeline::take()
{
    std::unique_lock lock(m_mutex);
    m_finished.wait(lock, [this] { return m_done.contains(m_nextToTake); });
    auto node = m_done.extract(m_nextToTake);
    m_claimedBytes -= m_pieces[m_nextToTake].length;
    ++m_nextToTake;
    lock.unlock();
    m_claimable.notify_all();

    if (node.mapped().error)
        std::rethrow_exception(node.mapped().error);
    return std::move(node.mapped().result);
}

}  // namespace wendrel
