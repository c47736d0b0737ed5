#pragma once

#include <QByteArray>
#include <QString>

namespace wendrel {

// Writes `bytes` to `path` completely or not at all: a full disk or a crash never leaves half
// a file under that name. Returns the system's reason when it fails, empty on success.
QString writeFileAtomically(const QString& path, const QByteArray& bytes);

}  // namespace wendrel
