#pragma once

#include "ZipFormat.h"

#include <QByteArray>

// The bytes of the records ZipWriter writes, from the values they hold; no I/O.
//
// Sizes and offsets from `zip64Threshold` up go into ZIP64 fields (4 GiB in real archives;
// tests lower it to reach that layout with small files). Names that are valid UTF-8 carry the
// UTF-8 flag; other names are the bytes of a file name from a system that gave it no
// encoding, and go without the flag, as tools read unflagged names on Unix byte for byte.
namespace wendrel::zip {

struct RecordFields {
    QByteArray name;
    quint16 method = methodStored;
    quint32 crc = 0;
    qint64 compressedSize = 0;
    qint64 size = 0;
    qint64 offset = 0;  // of the local header
    DosDateTime modified;
};

// A local header's length never depends on the sizes, so it can be written again in place once
// they are known.
QByteArray localHeader(const RecordFields& fields, quint64 zip64Threshold);

QByteArray centralRecord(const RecordFields& fields, quint64 zip64Threshold);

// The end record, preceded by a ZIP64 end record and its locator when the count, the
// directory's size or its offset needs them. `centralOffset` is where the directory starts;
// the records start right after it.
QByteArray endRecords(quint64 count, qint64 centralOffset, qint64 centralSize,
                      quint64 zip64Threshold);

}  // namespace wendrel::zip
