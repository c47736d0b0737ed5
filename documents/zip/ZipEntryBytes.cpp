#include "ZipEntryBytes.h"

#include "ZipReader.h"
#include "operations/OperationError.h"

#include <QBuffer>
#include <QCoreApplication>

namespace wendrel {

std::optional<QByteArray> readZipEntry(const ZipReader& reader, const QString& path, qint64 maximumBytes)
{
    for (const ZipReader::Entry& entry : reader.entries()) {
        if (entry.path != path || entry.isFolder())
            continue;
        if (entry.size < 0 || entry.size > maximumBytes)
            throw OperationError(QCoreApplication::translate("ZipEntryBytes", "“%1” is too large").arg(path));
        QByteArray bytes;
        bytes.reserve(entry.size);
        QBuffer buffer(&bytes);
        buffer.open(QIODevice::WriteOnly);
        reader.extract(entry, buffer);  // stops at the stated size
        return bytes;
    }
    return std::nullopt;
}

}  // namespace wendrel
