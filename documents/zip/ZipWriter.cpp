#include "ZipWriter.h"

#include "Crc32.h"
#include "DeflatePipeline.h"
#include "ZipFolderPlan.h"
#include "ZipRecords.h"
#include "operations/FileNames.h"
#include "operations/OperationError.h"

#include <QCoreApplication>
#include <QBuffer>
#include <QFile>
#include <QThread>

#include <algorithm>
#include <cerrno>
#include <cstring>

#include <fcntl.h>
#include <unistd.h>

namespace wendrel {

using namespace zip;

namespace {

// Large enough that thread hand-overs cost nothing, small enough that two cores share even a
// single big file.
constexpr qint64 pieceSize = 1024 * 1024;
// Input read ahead of the writer: with the compressed copies this bounds the memory in use.
constexpr qint64 readAheadBudget = 8 * pieceSize;

QString translate(const char* text) { return QCoreApplication::translate("ZipWriter", text); }

QString shownName(const QByteArray& path) { return lastPathComponent(QFile::decodeName(path)); }

OperationError unreadable(const QByteArray& path, const QString& reason)
{
    return OperationError(translate("Couldn't read “%1”: %2").arg(shownName(path), reason));
}

OperationError changedWhilePacking(const QByteArray& path)
{
    return OperationError(translate("“%1” changed while it was being packed").arg(shownName(path)));
}

// By its bytes, as a name that is not UTF-8 has no QString that leads back to it.
void openForReading(QFile& file, const QByteArray& path)
{
    const int descriptor = ::open(path.constData(), O_RDONLY | O_CLOEXEC);
    if (descriptor < 0)
        throw unreadable(path, QString::fromLocal8Bit(std::strerror(errno)));
    if (!file.open(descriptor, QIODevice::ReadOnly, QFileDevice::AutoCloseHandle)) {
        ::close(descriptor);
        throw unreadable(path, file.errorString());
    }
}

qint64 pieceCount(qint64 size) { return (size + pieceSize - 1) / pieceSize; }

}  // namespace

ZipWriter::ZipWriter(QIODevice& archive) : ZipWriter(archive, Options{}) {}

ZipWriter::ZipWriter(QIODevice& archive, Options options)
    : m_archive(archive), m_options(options), m_position(archive.pos())
{
}

ZipWriter::~ZipWriter() = default;

void ZipWriter::addEntry(const QString& name, const QByteArray& data, Compression compression,
                         const QDateTime& modified)
{
    plan({
        .name = name.toUtf8(),
        .path = {},
        .data = data,
        .size = data.size(),
        .store = compression == Compression::store,
        .modified = toDosDateTime(modified),
    });
}

void ZipWriter::addItem(const QString& path, const QString& name)
{
    const QDateTime now = QDateTime::currentDateTime();
    for (PlannedItem& item : planItem(diskView(), QFile::encodeName(path), name.toUtf8())) {
        const bool folder = item.sourcePath.isEmpty();
        const QDateTime modified = item.modified.isValid() ? item.modified : now;
        plan({.name = std::move(item.name),
              .path = std::move(item.sourcePath),
              .data = {},
              .size = item.size,
              .store = folder,
              .modified = toDosDateTime(modified)});
    }
}

void ZipWriter::plan(PlannedEntry entry)
{
    if (entry.name.size() > 0xFFFF) {
        // The name's length is a 16-bit field.
        throw OperationError(translate("“%1” lies too deep in its folders for a ZIP archive")
                                 .arg(lastPathComponent(QString::fromUtf8(entry.name))));
    }
    m_plannedBytes += entry.size;
    m_entries.push_back(std::move(entry));
}

QByteArray ZipWriter::readPiece(const PlannedEntry& entry, qint64 from, qint64 length,
                                bool last) const
{
    if (entry.path.isEmpty())
        return QByteArray::fromRawData(entry.data.constData() + from, length);

    QFile file;
    openForReading(file, entry.path);
    if (!file.seek(from))
        throw unreadable(entry.path, file.errorString());
    QByteArray bytes = file.read(length);
    if (file.error() != QFileDevice::NoError)
        throw unreadable(entry.path, file.errorString());
    // The header's sizes were planned from the file's size: a file that shrank or grew since
    // would give an entry that doesn't match them.
    if (bytes.size() != length || (last && file.size() != entry.size))
        throw changedWhilePacking(entry.path);
    return bytes;
}

void ZipWriter::finish(const Progress& progress)
{
    std::vector<DeflatePipeline::Piece> pieces;
    std::vector<qint64> piecesPerEntry(m_entries.size(), 0);
    for (size_t index = 0; index < m_entries.size(); ++index) {
        const PlannedEntry& entry = m_entries[index];
        if (entry.store || entry.size == 0)
            continue;
        const qint64 count = pieceCount(entry.size);
        piecesPerEntry[index] = count;
        for (qint64 piece = 0; piece < count; ++piece) {
            const qint64 offset = piece * pieceSize;
            pieces.push_back({
                .entry = index,
                .offset = offset,
                .length = std::min(pieceSize, entry.size - offset),
                .last = piece == count - 1,
                .keepInput = count == 1,
            });
        }
    }

    const int threads = m_options.threads > 0 ? m_options.threads : QThread::idealThreadCount();
    DeflatePipeline pipeline(
        std::move(pieces),
        [this](const DeflatePipeline::Piece& piece, qint64 history) {
            return readPiece(m_entries[piece.entry], piece.offset - history, piece.length + history,
                             piece.last);
        },
        threads, readAheadBudget);

    qint64 done = 0;
    const auto advance = [&](qint64 bytes) {
        done += bytes;
        if (progress)
            progress(done, m_plannedBytes);
    };
    advance(0);
    for (size_t index = 0; index < m_entries.size(); ++index)
        writeEntry(m_entries[index], pipeline, piecesPerEntry[index], advance);
    writeEnd();

    // A file that fell back to storing may have left compressed bytes past the new end.
    if (auto* file = qobject_cast<QFileDevice*>(&m_archive)) {
        if ((file->size() > m_position && !file->resize(m_position)) || !file->flush())
            throw unwritable();
    } else if (auto* buffer = qobject_cast<QBuffer*>(&m_archive)) {
        buffer->buffer().truncate(m_position);
    }
}

void ZipWriter::writeEntry(PlannedEntry& entry, DeflatePipeline& pipeline, qint64 pieces,
                           const std::function<void(qint64)>& advance)
{
    WrittenEntry written{.method = methodStored,
                         .crc = 0,
                         .compressedSize = 0,
                         .size = entry.size,
                         .offset = m_position};
    if (pieces == 0) {
        // Folders, empty files and contents to keep as they are.
        written.crc = crc32(entry.data);
        written.compressedSize = entry.data.size();
        write(localHeader(entry, written));
        write(entry.data);
        advance(entry.size);
    } else if (pieces == 1) {
        const DeflatePipeline::Result result = pipeline.take();
        const bool deflate = result.compressed.size() < result.input.size();
        const QByteArray& payload = deflate ? result.compressed : result.input;
        written.method = deflate ? methodDeflated : methodStored;
        written.crc = result.crc;
        written.compressedSize = payload.size();
        write(localHeader(entry, written));
        write(payload);
        advance(entry.size);
    } else {
        // The CRC and the compressed size are known only at the end: the header is written
        // again once they are, at the same length.
        written.method = methodDeflated;
        write(localHeader(entry, written));
        const qint64 payloadStart = m_position;
        for (qint64 piece = 0; piece < pieces; ++piece) {
            const qint64 length = std::min(pieceSize, entry.size - piece * pieceSize);
            const DeflatePipeline::Result result = pipeline.take();
            written.crc = crc32Combine(written.crc, result.crc, length);
            written.compressedSize += result.compressed.size();
            write(result.compressed);
            advance(length);
        }
        if (written.compressedSize >= entry.size) {
            seek(payloadStart);
            written.method = methodStored;
            written.crc = copyStored(entry);
            written.compressedSize = entry.size;
        }
        const qint64 end = m_position;
        seek(written.offset);
        write(localHeader(entry, written));
        seek(end);
    }
    m_central += centralRecord(entry, written);
    ++m_count;
    entry.data = QByteArray();  // written: no longer needed
}

quint32 ZipWriter::copyStored(const PlannedEntry& entry)
{
    if (entry.path.isEmpty()) {
        write(entry.data);
        return crc32(entry.data);
    }
    QFile file;
    openForReading(file, entry.path);
    quint32 crc = 0;
    for (qint64 copied = 0; copied < entry.size;) {
        const QByteArray bytes = file.read(std::min(pieceSize, entry.size - copied));
        if (file.error() != QFileDevice::NoError)
            throw unreadable(entry.path, file.errorString());
        if (bytes.isEmpty())
            throw changedWhilePacking(entry.path);
        crc = crc32(bytes, crc);
        write(bytes);
        copied += bytes.size();
    }
    if (file.size() != entry.size)
        throw changedWhilePacking(entry.path);
    return crc;
}

QByteArray ZipWriter::localHeader(const PlannedEntry& entry, const WrittenEntry& written) const
{
    return zip::localHeader({entry.name, written.method, written.crc, written.compressedSize,
                             written.size, written.offset, entry.modified},
                            m_options.zip64Threshold);
}

QByteArray ZipWriter::centralRecord(const PlannedEntry& entry, const WrittenEntry& written) const
{
    return zip::centralRecord({entry.name, written.method, written.crc, written.compressedSize,
                               written.size, written.offset, entry.modified},
                              m_options.zip64Threshold);
}

void ZipWriter::writeEnd()
{
    const qint64 centralOffset = m_position;
    const qint64 centralSize = m_central.size();
    write(m_central);
    m_central = QByteArray();
    write(endRecords(m_count, centralOffset, centralSize, m_options.zip64Threshold));
}

void ZipWriter::write(QByteArrayView bytes)
{
    if (m_archive.write(bytes.data(), bytes.size()) != bytes.size())
        throw unwritable();
    m_position += bytes.size();
}

void ZipWriter::seek(qint64 position)
{
    if (!m_archive.seek(position))
        throw unwritable();
    m_position = position;
}

OperationError ZipWriter::unwritable() const
{
    const auto* file = qobject_cast<const QFileDevice*>(&m_archive);
    const QString name = file ? lastPathComponent(file->fileName()) : translate("the archive");
    return OperationError(translate("Couldn't write “%1”: %2").arg(name, m_archive.errorString()));
}

}  // namespace wendrel
