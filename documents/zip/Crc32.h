#pragma once

#include <QByteArrayView>

namespace wendrel {

// The CRC-32 of ISO 3309 / IEEE 802.3 that ZIP records carry (reflected polynomial 0xEDB88320,
// initial value and final inversion 0xFFFFFFFF). Pass the CRC so far as `previous` to continue
// over the next bytes: crc32(b, crc32(a)) equals the CRC of a followed by b.
quint32 crc32(QByteArrayView bytes, quint32 previous = 0);

// The CRC of a followed by b from the CRC of each and b's length, without the bytes: lets
// pieces of one file be summed up on different threads.
quint32 crc32Combine(quint32 first, quint32 second, qint64 secondLength);

}  // namespace wendrel
