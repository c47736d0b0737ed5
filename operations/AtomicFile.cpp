#include "AtomicFile.h"

#include <QSaveFile>

namespace wendrel {

QString writeFileAtomically(const QString& path, const QByteArray& bytes)
{
    QSaveFile file(path);
    if (!file.open(QIODevice::WriteOnly) || file.write(bytes) != bytes.size() || !file.commit())
        return file.errorString().isEmpty() ? QStringLiteral("unknown error") : file.errorString();
    return {};
}

}  // namespace wendrel
