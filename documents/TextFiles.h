#pragma once

#include <QString>

namespace wendrel {

// Reads a whole file as UTF-8. Throws OperationError naming the file when it can't be read,
// is larger than `maximumBytes` (so a huge file never fills memory), or isn't valid UTF-8.
QString readUtf8TextFile(const QString& path, qint64 maximumBytes);

// Writes `text` as UTF-8, atomically: the file appears complete or not at all.
// Throws OperationError when it can't be written.
void writeUtf8TextFile(const QString& path, const QString& text);

}  // namespace wendrel
