#pragma once

#include <QByteArray>
#include <QByteArrayView>
#include <QDateTime>

#include <cstdint>

// The record layouts shared by ZipWriter and ZipReader. All integers in a ZIP archive are
// little-endian; every record starts with a four-byte signature.
namespace wendrel::zip {

constexpr quint32 localHeaderSignature = 0x04034B50;
constexpr quint32 centralRecordSignature = 0x02014B50;
constexpr quint32 endRecordSignature = 0x06054B50;
constexpr quint32 zip64EndRecordSignature = 0x06064B50;
constexpr quint32 zip64LocatorSignature = 0x07064B50;

constexpr int localHeaderSize = 30;
constexpr int centralRecordSize = 46;
constexpr int endRecordSize = 22;
constexpr int zip64EndRecordSize = 56;
constexpr int zip64LocatorSize = 20;
// The end record plus the longest comment it can carry: where a reader looks for it.
constexpr int endRecordSearchSpan = endRecordSize + 0xFFFF;

constexpr quint16 methodStored = 0;
constexpr quint16 methodDeflated = 8;

constexpr quint16 flagEncrypted = 0x0001;
constexpr quint16 flagDataDescriptor = 0x0008;
constexpr quint16 flagUtf8Name = 0x0800;

constexpr quint16 versionNeededPlain = 20;
constexpr quint16 versionNeededZip64 = 45;
// Made on Unix (high byte 3) by format version 3.0 (low byte 30).
constexpr quint16 versionMadeByUnix = 0x031E;
constexpr int hostUnix = 3;

// Unix mode 040755 and the MS-DOS directory bit; Unix mode 0100644.
constexpr quint32 folderAttributes = 0x41ED0010;
constexpr quint32 fileAttributes = 0x81A40000;

constexpr quint16 zip64ExtraId = 0x0001;
constexpr quint16 unicodePathExtraId = 0x7075;

// A 32-bit field holding this value says "the real value is in the ZIP64 extra field".
constexpr quint32 zip64Marker32 = 0xFFFFFFFF;
constexpr quint16 zip64Marker16 = 0xFFFF;

// MS-DOS time and date as a pair of 16-bit fields.
struct DosDateTime {
    quint16 time = 0;
    quint16 date = 0;
};

// In local time: two-second resolution (odd seconds round down). Years before 1980 keep their
// month and day under year 1980; years past 2107, which 16 bits can't hold, become 2107.
DosDateTime toDosDateTime(const QDateTime& moment);

// The local time an MS-DOS time and date stand for; invalid when the fields make no date.
QDateTime fromDosDateTime(DosDateTime dos);

// Appends integers in little-endian order.
class LittleEndianWriter {
public:
    explicit LittleEndianWriter(QByteArray& bytes) : m_bytes(bytes) {}

    LittleEndianWriter& u16(quint16 value);
    LittleEndianWriter& u32(quint32 value);
    LittleEndianWriter& u64(quint64 value);
    LittleEndianWriter& bytes(QByteArrayView value);

private:
    template <typename Integer>
    LittleEndianWriter& integer(Integer value);

    QByteArray& m_bytes;
};

// Reads little-endian integers; the caller makes sure the range holds the whole field.
quint16 readU16(QByteArrayView bytes, qsizetype offset);
quint32 readU32(QByteArrayView bytes, qsizetype offset);
quint64 readU64(QByteArrayView bytes, qsizetype offset);

}  // namespace wendrel::zip
