// libFuzzer target for ZipReader: any bytes, read as an archive, must end in an OperationError
// or in files inside the target folder, never in a crash, a hang or a write outside.
#include "documents/zip/ExtractionTarget.h"
#include "documents/zip/ZipReader.h"
#include "operations/OperationError.h"

#include <QBuffer>
#include <QDirIterator>
#include <QFileInfo>
#include <QTemporaryDir>

#include <algorithm>
#include <cstdint>
#include <cstdlib>

using namespace wendrel;

namespace {

void require(bool condition)
{
    if (!condition)
        std::abort();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    QByteArray bytes = QByteArray::fromRawData(reinterpret_cast<const char*>(data), static_cast<qsizetype>(size));
    QBuffer archive(&bytes);
    archive.open(QIODevice::ReadOnly);
    try {
        const ZipReader reader(archive);
        // Entries read one by one are not checked for overlap (that is the whole walk's rule):
        // the inputs they may produce are bounded here, not by the reader.
        qint64 budget = 16 * 1024 * 1024;
        for (const ZipReader::Entry& entry : reader.entries()) {
            // Wherever a name leads, it stays below the folder and holds no step that climbs.
            if (const std::optional<QByteArray> target = extractionTarget("/box", entry.pathOnDisk)) {
                require(target->startsWith("/box/") && target->size() > 5);
                require(!target->contains("/../") && !target->endsWith("/..") && !target->contains("/./"));
            }
            budget -= std::max<qint64>(entry.size, 0);
            if (budget < 0)
                break;
            QBuffer contents;
            contents.open(QIODevice::WriteOnly);
            try {
                reader.extract(entry, contents);
                require(contents.size() <= entry.size);
            } catch (const OperationError&) {
            }
        }

        QTemporaryDir scratch;
        const QString folder = scratch.filePath(QStringLiteral("out"));
        try {
            reader.extractAll(folder);
        } catch (const OperationError&) {
        }
        // Nothing but files and folders, and all of them inside.
        QDirIterator items(scratch.path(), QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot,
                           QDirIterator::Subdirectories);
        while (items.hasNext()) {
            const QFileInfo item = items.nextFileInfo();
            require(!item.isSymLink() && (item.isFile() || item.isDir()));
            require(item.filePath().startsWith(folder));
        }
    } catch (const OperationError&) {
    }
    return 0;
}
