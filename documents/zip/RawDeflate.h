#pragma once

#include <QByteArray>
#include <QByteArrayView>

#include <functional>

struct libdeflate_compressor;
struct z_stream_s;

namespace wendrel {

// Raw DEFLATE (RFC 1951, no zlib or gzip wrapper) as ZIP entries carry it, at the usual
// default level 6.
//
// A long input may be compressed as consecutive pieces, each on any thread: a piece primed with
// the 32 KiB that precede it and ended on a byte boundary can be followed directly by the next,
// and the pieces joined in order form one valid stream. The output depends only on the pieces,
// never on which thread made them or when.
//
// Pieces that a fast trial can't shrink (photos, video, anything already compressed) are kept
// in stored blocks instead of being searched for matches that aren't there: about three times
// faster, and at most a few bytes per 64 KiB larger.
class RawDeflater {
public:
    RawDeflater();
    ~RawDeflater();
    RawDeflater(const RawDeflater&) = delete;
    RawDeflater& operator=(const RawDeflater&) = delete;

    // Compresses one piece. `history` is what came just before it (only its last 32 KiB
    // count); `last` ends the stream, otherwise the piece ends with an empty stored block so
    // that the next one starts on a byte boundary.
    QByteArray compress(QByteArrayView history, QByteArrayView piece, bool last);

    // The bytes of history that matter: the DEFLATE window.
    static constexpr qsizetype windowSize = 32 * 1024;

private:
    QByteArray compressWhole(QByteArrayView input);
    QByteArray compressWithZlib(QByteArrayView history, QByteArrayView piece, bool last);
    bool looksIncompressible(QByteArrayView piece);

    z_stream_s* m_stream;
    libdeflate_compressor* m_wholeCompressor;  // one-piece inputs: faster than zlib at level 6
    libdeflate_compressor* m_trialCompressor;  // the fast trial, level 1
    QByteArray m_trialOutput;
};

// Inflates one raw DEFLATE stream fed in pieces.
class RawInflater {
public:
    enum class Result {
        finished,  // the stream ended within the limit
        damaged,   // invalid data, or the input ran out before the stream's end
        tooLong,   // the output would pass `outputLimit`
    };

    RawInflater();
    ~RawInflater();
    RawInflater(const RawInflater&) = delete;
    RawInflater& operator=(const RawInflater&) = delete;

    // `readMore` returns the next piece of input, empty when there is no more; `write` takes
    // every piece of output, in order. Input after the stream's end is left unread.
    Result inflate(const std::function<QByteArrayView()>& readMore,
                   const std::function<void(QByteArrayView)>& write, qint64 outputLimit);

private:
    z_stream_s* m_stream;
    QByteArray m_output;
};

}  // namespace wendrel
