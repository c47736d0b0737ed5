#include "AtomicFile.h"

#include "Logging.h"
#include "OperationError.h"

#include <QSaveFile>

namespace wendrel {

void writeFileAtomically(const QString& path, const QByteArray& bytes, const QString& failure)
{
    QSaveFile file(path);
    if (file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size() && file.commit())
        return;
    qCInfo(lcJobs, "can't write %s: %s", qUtf8Printable(path), qUtf8Printable(file.errorString()));
    throw OperationError::withReason(failure, file.errorString());
}

}  // namespace wendrel
