#pragma once

#include <QByteArray>
#include <QString>

#include <optional>

namespace wendrel {

class ZipReader;

// The contents of the entry at `path` (as the archive names it), for formats that keep small
// XML parts inside a ZIP (DOCX, ODT, XLSX, ODS); nothing when there is no such entry. Refuses,
// before inflating a byte, an entry that says it holds more than `maximumBytes`, and stops one
// that inflates past what it says: a part can't fill memory. Throws OperationError otherwise as
// ZipReader::extract does.
std::optional<QByteArray> readZipEntry(const ZipReader& reader, const QString& path, qint64 maximumBytes);

}  // namespace wendrel
