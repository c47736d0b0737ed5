#include "ZipRecords.h"

#include "ZipEntryName.h"

namespace wendrel::zip {

namespace {

bool hasZip64Sizes(const RecordFields& fields, quint64 threshold)
{
    return static_cast<quint64>(fields.size) >= threshold;
}

// From "version needed" to the extra field's length: the same in both headers.
void appendSharedFields(LittleEndianWriter& out, const RecordFields& fields, bool zip64Sizes,
                        quint16 versionNeeded, quint16 extraLength)
{
    out.u16(versionNeeded)
        .u16(isValidUtf8(fields.name) ? flagUtf8Name : 0)
        .u16(fields.method)
        .u16(fields.modified.time)
        .u16(fields.modified.date)
        .u32(fields.crc)
        .u32(zip64Sizes ? zip64Marker32 : static_cast<quint32>(fields.compressedSize))
        .u32(zip64Sizes ? zip64Marker32 : static_cast<quint32>(fields.size))
        .u16(static_cast<quint16>(fields.name.size()))
        .u16(extraLength);
}

}  // namespace

QByteArray localHeader(const RecordFields& fields, quint64 zip64Threshold)
{
    const bool zip64 = hasZip64Sizes(fields, zip64Threshold);
    QByteArray header;
    header.reserve(localHeaderSize + fields.name.size() + 20);
    LittleEndianWriter out(header);
    out.u32(localHeaderSignature);
    appendSharedFields(out, fields, zip64, zip64 ? versionNeededZip64 : versionNeededPlain,
                       zip64 ? 20 : 0);
    out.bytes(fields.name);
    // A local ZIP64 field always holds both sizes, so its length never depends on them.
    if (zip64) {
        out.u16(zip64ExtraId).u16(16).u64(static_cast<quint64>(fields.size))
            .u64(static_cast<quint64>(fields.compressedSize));
    }
    return header;
}

QByteArray centralRecord(const RecordFields& fields, quint64 zip64Threshold)
{
    const bool zip64Sizes = hasZip64Sizes(fields, zip64Threshold);
    const bool zip64Offset = static_cast<quint64>(fields.offset) >= zip64Threshold;
    const quint16 extraLength = (zip64Sizes || zip64Offset ? 4 : 0) + (zip64Sizes ? 16 : 0)
                                + (zip64Offset ? 8 : 0);
    QByteArray record;
    record.reserve(centralRecordSize + fields.name.size() + extraLength);
    LittleEndianWriter out(record);
    out.u32(centralRecordSignature).u16(versionMadeByUnix);
    appendSharedFields(out, fields, zip64Sizes,
                       extraLength > 0 ? versionNeededZip64 : versionNeededPlain, extraLength);
    out.u16(0)   // comment length
        .u16(0)  // disk number
        .u16(0)  // internal attributes
        .u32(fields.name.endsWith('/') ? folderAttributes : fileAttributes)
        .u32(zip64Offset ? zip64Marker32 : static_cast<quint32>(fields.offset))
        .bytes(fields.name);
    // Only the fields marked above follow, in this order.
    if (extraLength > 0) {
        out.u16(zip64ExtraId).u16(extraLength - 4);
        if (zip64Sizes) {
            out.u64(static_cast<quint64>(fields.size))
                .u64(static_cast<quint64>(fields.compressedSize));
        }
        if (zip64Offset)
            out.u64(static_cast<quint64>(fields.offset));
    }
    return record;
}

QByteArray endRecords(quint64 count, qint64 centralOffset, qint64 centralSize,
                      quint64 zip64Threshold)
{
    const bool manyEntries = count > zip64Marker16;
    const bool farOffset = static_cast<quint64>(centralOffset) >= zip64Threshold;
    const bool largeCentral = static_cast<quint64>(centralSize) >= zip64Threshold;

    QByteArray end;
    LittleEndianWriter out(end);
    if (manyEntries || farOffset || largeCentral) {
        const qint64 zip64EndOffset = centralOffset + centralSize;
        out.u32(zip64EndRecordSignature)
            .u64(zip64EndRecordSize - 12)  // the record's size after this field
            .u16(versionMadeByUnix)
            .u16(versionNeededZip64)
            .u32(0)  // this disk
            .u32(0)  // the disk where the central directory starts
            .u64(count)
            .u64(count)
            .u64(static_cast<quint64>(centralSize))
            .u64(static_cast<quint64>(centralOffset));
        out.u32(zip64LocatorSignature).u32(0).u64(static_cast<quint64>(zip64EndOffset)).u32(1);
    }
    const quint16 count16 = manyEntries ? zip64Marker16 : static_cast<quint16>(count);
    out.u32(endRecordSignature)
        .u16(0)
        .u16(0)
        .u16(count16)
        .u16(count16)
        .u32(largeCentral ? zip64Marker32 : static_cast<quint32>(centralSize))
        .u32(farOffset ? zip64Marker32 : static_cast<quint32>(centralOffset))
        .u16(0);
    return end;
}

}  // namespace wendrel::zip
