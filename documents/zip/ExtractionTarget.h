#pragma once

#include <QByteArray>
#include <QByteArrayView>

#include <optional>

namespace wendrel {

// Where the entry named `entryName` lands when an archive unpacks into the folder `root`, as a
// path in the file system's bytes; nothing when it would land outside the folder or on it.
//
// Names count from the folder: leading "/" drop away, "." steps vanish, ".." steps go back up
// but never above `root` — a name that climbs out is refused whole rather than clamped, so
// "../../etc/passwd" never becomes "etc/passwd". On Linux a backslash and a drive letter are
// ordinary characters: "..\evil" and "C:/x" are names inside the folder. A step holding a NUL
// byte is no name the system takes, so it refuses the entry too. No step of the result is
// empty, "." or "..".
std::optional<QByteArray> extractionTarget(QByteArrayView root, QByteArrayView entryName);

}  // namespace wendrel
