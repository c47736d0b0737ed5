#include "RawDeflate.h"

#include <zlib.h>

#include <algorithm>
#include <new>

namespace wendrel {

namespace {

// Negative window bits ask zlib for a raw stream, without header or trailer.
constexpr int rawWindowBits = -15;
constexpr int memoryLevel = 8;
constexpr qsizetype inflateBufferSize = 256 * 1024;

uInt clampedLength(qsizetype length)
{
    return static_cast<uInt>(std::min<qsizetype>(length, 1 << 30));
}

}  // namespace

RawDeflater::RawDeflater() : m_stream(new z_stream{})
{
    if (deflateInit2(m_stream, Z_DEFAULT_COMPRESSION, Z_DEFLATED, rawWindowBits, memoryLevel,
                     Z_DEFAULT_STRATEGY) != Z_OK) {
        delete m_stream;
        throw std::bad_alloc();
    }
}

RawDeflater::~RawDeflater()
{
    deflateEnd(m_stream);
    delete m_stream;
}

QByteArray RawDeflater::compress(QByteArrayView history, QByteArrayView piece, bool last)
{
    deflateReset(m_stream);
    if (!history.isEmpty()) {
        const QByteArrayView window = history.last(std::min(history.size(), windowSize));
        deflateSetDictionary(m_stream, reinterpret_cast<const Bytef*>(window.data()),
                             static_cast<uInt>(window.size()));
    }

    // deflateBound covers a finished stream; a sync flush adds at most a few bytes more.
    QByteArray output(
        static_cast<qsizetype>(deflateBound(m_stream, static_cast<uLong>(piece.size()))) + 64,
        Qt::Uninitialized);
    m_stream->next_in = reinterpret_cast<Bytef*>(const_cast<char*>(piece.data()));
    qsizetype remaining = piece.size();
    qsizetype produced = 0;
    const int flush = last ? Z_FINISH : Z_SYNC_FLUSH;
    for (;;) {
        const uInt chunk = clampedLength(remaining);
        m_stream->avail_in = chunk;
        if (output.size() - produced < 64)
            output.resize(output.size() * 2);
        m_stream->next_out = reinterpret_cast<Bytef*>(output.data() + produced);
        m_stream->avail_out = clampedLength(output.size() - produced);
        const uInt outBefore = m_stream->avail_out;
        const int status = deflate(m_stream, chunk == remaining ? flush : Z_NO_FLUSH);
        produced += outBefore - m_stream->avail_out;
        remaining -= chunk - m_stream->avail_in;
        if (status == Z_STREAM_END)
            break;
        if (!last && remaining == 0 && m_stream->avail_out != 0)
            break;  // the sync flush is complete
        if (status != Z_OK && status != Z_BUF_ERROR)
            throw std::bad_alloc();  // zlib fails here only when it can't allocate
    }
    output.truncate(produced);
    return output;
}

RawInflater::RawInflater() : m_stream(new z_stream{}), m_output(inflateBufferSize, Qt::Uninitialized)
{
    if (inflateInit2(m_stream, rawWindowBits) != Z_OK) {
        delete m_stream;
        throw std::bad_alloc();
    }
}

RawInflater::~RawInflater()
{
    inflateEnd(m_stream);
    delete m_stream;
}

RawInflater::Result RawInflater::inflate(const std::function<QByteArrayView()>& readMore,
                                         const std::function<void(QByteArrayView)>& write,
                                         qint64 outputLimit)
{
    inflateReset(m_stream);
    qint64 written = 0;
    QByteArrayView input;
    for (;;) {
        if (m_stream->avail_in == 0) {
            input = readMore();
            if (input.isEmpty())
                return Result::damaged;  // the data ended before the stream did
            m_stream->next_in = reinterpret_cast<Bytef*>(const_cast<char*>(input.data()));
            m_stream->avail_in = static_cast<uInt>(input.size());
        }
        m_stream->next_out = reinterpret_cast<Bytef*>(m_output.data());
        m_stream->avail_out = static_cast<uInt>(m_output.size());
        const int status = ::inflate(m_stream, Z_NO_FLUSH);
        if (status != Z_OK && status != Z_STREAM_END && status != Z_BUF_ERROR) {
            if (status == Z_MEM_ERROR)
                throw std::bad_alloc();
            return Result::damaged;
        }
        const qsizetype produced = m_output.size() - m_stream->avail_out;
        if (produced > outputLimit - written)
            return Result::tooLong;
        written += produced;
        if (produced > 0)
            write(QByteArrayView(m_output.constData(), produced));
        if (status == Z_STREAM_END)
            return Result::finished;
    }
}

}  // namespace wendrel
