#include "RawDeflate.h"

#include <libdeflate.h>
#include <zlib.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <new>

namespace wendrel {

namespace {

// Negative window bits ask zlib for a raw stream, without header or trailer.
constexpr int rawWindowBits = -15;
constexpr int memoryLevel = 8;
constexpr qsizetype inflateBufferSize = 256 * 1024;
constexpr int defaultLevel = 6;
constexpr int trialLevel = 1;
// A stored block holds at most 65,535 bytes.
constexpr qsizetype storedBlockSize = 0xFFFF;
// Below this many bits of entropy per byte a piece surely compresses: no trial needed.
constexpr double surelyCompressibleEntropy = 7.0;

// Order-0 entropy in bits per byte: a cheap first look before the trial compression.
double entropyPerByte(QByteArrayView bytes)
{
    std::array<qsizetype, 256> counts{};
    for (const char byte : bytes)
        ++counts[static_cast<unsigned char>(byte)];
    double entropy = 0;
    const auto total = static_cast<double>(bytes.size());
    for (const qsizetype count : counts) {
        if (count > 0) {
            const double share = static_cast<double>(count) / total;
            entropy -= share * std::log2(share);
        }
    }
    return entropy;
}

// Stored blocks, each a header byte (final bit, type 00), the length and its complement. The
// piece starts on a byte boundary and ends on one.
QByteArray storedBlocks(QByteArrayView piece, bool last)
{
    QByteArray output;
    output.reserve(piece.size() + (piece.size() / storedBlockSize + 1) * 5);
    qsizetype offset = 0;
    do {
        const qsizetype length = std::min(storedBlockSize, piece.size() - offset);
        const bool final = last && offset + length == piece.size();
        const auto size = static_cast<quint16>(length);
        const char header[5] = {
            static_cast<char>(final ? 1 : 0),
            static_cast<char>(size & 0xFF), static_cast<char>(size >> 8),
            static_cast<char>(~size & 0xFF), static_cast<char>((~size >> 8) & 0xFF),
        };
        output.append(header, 5);
        output.append(piece.sliced(offset, length));
        offset += length;
    } while (offset < piece.size());
    return output;
}

uInt clampedLength(qsizetype length)
{
    return static_cast<uInt>(std::min<qsizetype>(length, 1 << 30));
}

}  // namespace

RawDeflater::RawDeflater()
    : m_stream(new z_stream{}),
      m_wholeCompressor(libdeflate_alloc_compressor(defaultLevel)),
      m_trialCompressor(libdeflate_alloc_compressor(trialLevel))
{
    if (!m_wholeCompressor || !m_trialCompressor
        || deflateInit2(m_stream, defaultLevel, Z_DEFLATED, rawWindowBits, memoryLevel,
                        Z_DEFAULT_STRATEGY) != Z_OK) {
        libdeflate_free_compressor(m_wholeCompressor);
        libdeflate_free_compressor(m_trialCompressor);
        delete m_stream;
        throw std::bad_alloc();
    }
}

RawDeflater::~RawDeflater()
{
    deflateEnd(m_stream);
    delete m_stream;
    libdeflate_free_compressor(m_wholeCompressor);
    libdeflate_free_compressor(m_trialCompressor);
}

QByteArray RawDeflater::compress(QByteArrayView history, QByteArrayView piece, bool last)
{
    // libdeflate writes only whole streams, so it serves inputs that fit one piece; zlib can
    // stop on a byte boundary and take a dictionary, which joining pieces needs.
    if (history.isEmpty() && last)
        return compressWhole(piece);
    if (looksIncompressible(piece))
        return storedBlocks(piece, last);
    return compressWithZlib(history, piece, last);
}

QByteArray RawDeflater::compressWhole(QByteArrayView input)
{
    QByteArray output(
        static_cast<qsizetype>(libdeflate_deflate_compress_bound(m_wholeCompressor, static_cast<size_t>(input.size()))),
        Qt::Uninitialized);
    const size_t produced = libdeflate_deflate_compress(m_wholeCompressor, input.data(),
                                                        static_cast<size_t>(input.size()),
                                                        output.data(), static_cast<size_t>(output.size()));
    output.truncate(static_cast<qsizetype>(produced));
    return output;
}

bool RawDeflater::looksIncompressible(QByteArrayView piece)
{
    if (piece.isEmpty() || entropyPerByte(piece) < surelyCompressibleEntropy)
        return false;
    // The trial fails when its output doesn't fit in 255/256 of the input: less than that is
    // not worth a full search.
    const qsizetype room = piece.size() - piece.size() / 256;
    if (m_trialOutput.size() < room)
        m_trialOutput.resize(room);
    return libdeflate_deflate_compress(m_trialCompressor, piece.data(),
                                       static_cast<size_t>(piece.size()), m_trialOutput.data(),
                                       static_cast<size_t>(room))
           == 0;
}

QByteArray RawDeflater::compressWithZlib(QByteArrayView history, QByteArrayView piece, bool last)
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
