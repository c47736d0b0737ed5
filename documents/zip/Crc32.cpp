#include "Crc32.h"

#include <libdeflate.h>
#include <zlib.h>

namespace wendrel {

quint32 crc32(QByteArrayView bytes, quint32 previous)
{
    // libdeflate's CRC uses carry-less multiplication where the processor has it: several
    // times faster than a table, which matters when every byte of an archive passes through.
    return libdeflate_crc32(previous, bytes.data(), static_cast<size_t>(bytes.size()));
}

quint32 crc32Combine(quint32 first, quint32 second, qint64 secondLength)
{
    return static_cast<quint32>(crc32_combine64(first, second, secondLength));
}

}  // namespace wendrel
