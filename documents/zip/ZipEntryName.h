#pragma once

#include <QByteArray>
#include <QByteArrayView>
#include <QString>

namespace wendrel {

struct EntryName {
    QString text;       // to show and to match
    QByteArray onDisk;  // the bytes the unpacked item's name is made of
};

// The name of an entry as its maker meant it.
//
// Names flagged as UTF-8 are read as UTF-8, invalid sequences becoming U+FFFD. Unflagged names
// come from tools that wrote the local character set: the Unicode path field some of them add
// wins when it matches the name, then the bytes are read as UTF-8 when they are valid UTF-8 (as
// Linux and macOS tools write them). Other bytes made on Unix are the file's name as it was
// there, in no known encoding: they go back to disk unchanged (and show with U+FFFD). The rest
// come from old Windows tools and read as code page 437, their MS-DOS character set.
EntryName decodeEntryName(QByteArrayView rawName, bool flaggedUtf8, QByteArrayView extraFields,
                          bool madeOnUnix);

// Whether the bytes are UTF-8 without a single invalid sequence.
bool isValidUtf8(QByteArrayView raw);

// The data of the first extra field with this id, or an empty view; never reads past `extras`.
QByteArrayView findExtraField(QByteArrayView extras, quint16 id);

}  // namespace wendrel
