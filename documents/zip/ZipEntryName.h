#pragma once

#include <QByteArrayView>
#include <QString>

namespace wendrel {

// The name of an entry as its maker meant it.
//
// Names flagged as UTF-8 are read as UTF-8, invalid sequences becoming U+FFFD. Unflagged names
// come from tools that wrote the local character set: the Unicode path field some of them add
// wins when it matches the name, then the bytes are read as UTF-8 when they are valid UTF-8 (as
// Linux and macOS tools write them), and otherwise as code page 437, the MS-DOS set of old
// Windows tools.
QString decodeEntryName(QByteArrayView rawName, bool flaggedUtf8, QByteArrayView extraFields);

// The data of the first extra field with this id, or an empty view; never reads past `extras`.
QByteArrayView findExtraField(QByteArrayView extras, quint16 id);

}  // namespace wendrel
