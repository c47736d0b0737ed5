// libFuzzer target for ZipReader: any bytes read as an archive end in an OperationError or in
// files and folders inside the target folder; never a crash, a hang, a link or a write outside.
#include "documents/zip/ExtractionTarget.h"
#include "documents/zip/ZipReader.h"
#include "operations/OperationError.h"

#include <QBuffer>
#include <QDirIterator>
#include <QTemporaryDir>

#include <cstdint>
#include <cstdlib>

using namespace wendrel;

#define REQUIRE(condition) if (!(condition)) std::abort()

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    QByteArray bytes = QByteArray::fromRawData(reinterpret_cast<const char*>(data), static_cast<qsizetype>(size));
    QBuffer archive(&bytes);
    archive.open(QIODevice::ReadOnly);
    try {
        const ZipReader reader(archive);
        // Entries read one by one skip the walk's overlap rule: the budget bounds them here.
        qint64 budget = 16 * 1024 * 1024;
        for (const ZipReader::Entry& entry : reader.entries()) {
            if (const std::optional<QByteArray> target = extractionTarget("/box", entry.pathOnDisk)) {
                REQUIRE(target->startsWith("/box/") && target->size() > 5);
                REQUIRE(!target->contains("/../") && !target->endsWith("/..") && !target->contains("/./"));
            }
            if ((budget -= qMax<qint64>(entry.size, 0)) < 0)
                break;
            QBuffer contents;
            contents.open(QIODevice::WriteOnly);
            try {
                reader.extract(entry, contents);
                REQUIRE(contents.size() <= entry.size);
            } catch (const OperationError&) {
            }
        }

        QTemporaryDir scratch;
        const QString folder = scratch.filePath(QStringLiteral("out"));
        try {
            reader.extractAll(folder);
        } catch (const OperationError&) {
        }
        QDirIterator items(scratch.path(), QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot,
                           QDirIterator::Subdirectories);
        while (items.hasNext()) {
            const QFileInfo item = items.nextFileInfo();
            REQUIRE(!item.isSymLink() && (item.isFile() || item.isDir()) && item.filePath().startsWith(folder));
        }
    } catch (const OperationError&) {
    }
    return 0;
}
