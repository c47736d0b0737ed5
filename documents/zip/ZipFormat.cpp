#include "ZipFormat.h"

#include <QtEndian>

#include <algorithm>

namespace wendrel::zip {

DosDateTime toDosDateTime(const QDateTime& moment)
{
    const QDateTime local = moment.toLocalTime();
    const QDate date = local.date();
    const QTime time = local.time();
    const int year = std::clamp(date.year(), 1980, 2107);
    return {
        static_cast<quint16>(time.hour() * 2048 + time.minute() * 32 + time.second() / 2),
        static_cast<quint16>((year - 1980) * 512 + date.month() * 32 + date.day()),
    };
}

QDateTime fromDosDateTime(DosDateTime dos)
{
    const QDate date(1980 + (dos.date >> 9), (dos.date >> 5) & 0x0F, dos.date & 0x1F);
    const QTime time(dos.time >> 11, (dos.time >> 5) & 0x3F, (dos.time & 0x1F) * 2);
    if (!date.isValid() || !time.isValid())
        return {};
    return QDateTime(date, time);
}

template <typename Integer>
LittleEndianWriter& LittleEndianWriter::integer(Integer value)
{
    char raw[sizeof(Integer)];
    qToLittleEndian(value, raw);
    m_bytes.append(raw, sizeof(Integer));
    return *this;
}

LittleEndianWriter& LittleEndianWriter::u16(quint16 value) { return integer(value); }
LittleEndianWriter& LittleEndianWriter::u32(quint32 value) { return integer(value); }
LittleEndianWriter& LittleEndianWriter::u64(quint64 value) { return integer(value); }

LittleEndianWriter& LittleEndianWriter::bytes(QByteArrayView value)
{
    m_bytes.append(value);
    return *this;
}

quint16 readU16(QByteArrayView bytes, qsizetype offset)
{
    return qFromLittleEndian<quint16>(bytes.data() + offset);
}

quint32 readU32(QByteArrayView bytes, qsizetype offset)
{
    return qFromLittleEndian<quint32>(bytes.data() + offset);
}

quint64 readU64(QByteArrayView bytes, qsizetype offset)
{
    return qFromLittleEndian<quint64>(bytes.data() + offset);
}

}  // namespace wendrel::zip
