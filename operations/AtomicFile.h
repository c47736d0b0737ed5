#pragma once

#include <QByteArray>
#include <QString>

namespace wendrel {

// Writes `bytes` to `path` completely or not at all: a full disk or a crash never leaves half
// a file under that name. Throws OperationError with `failure` ("Couldn't save the image")
// followed by the system's reason.
void writeFileAtomically(const QString& path, const QByteArray& bytes, const QString& failure);

}  // namespace wendrel
