#include "ZipWriter.h"

#include "Crc32.h"
#include "DeflatePipeline.h"
#include "operations/FileNames.h"
#include "operations/OperationError.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QThread>

#include <algorithm>

namespace wendrel {

using namespace zip;

namespace {

// Large enough that thread hand-overs cost nothing, small enough that two cores share even a
// single big file.
constexpr qint64 pieceSize = 1024 * 1024;
// Input read ahead of the writer: with the compressed copies this bounds the memory in use.
constexpr qint64 readAheadBudget = 8 * pieceSize;

QString translate(const char* text) { return QCoreApplication::translate("ZipWriter", text); }

OperationError unreadable(const QString& path, const QString& reason)
{
    return OperationError(translate("Couldn't read “%1”: %2").arg(lastPathComponent(path), reason));
}

OperationError changedWhilePacking(const QString& path)
{
    return OperationError(
        translate("“%1” changed while it was being packed").arg(lastPathComponent(path)));
}

qint64 pieceCount(qint64 size) { return (size + pieceSize - 1) / pieceSize; }

}  // namespace

ZipWriter::ZipWriter(QFileDevice& archive) : ZipWriter(archive, Options{}) {}

ZipWriter::ZipWriter(QFileDevice& archive, Options options)
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
    QString item = path;
    while (item.size() > 1 && item.endsWith(u'/'))
        item.chop(1);
    QStringList foldersAbove;
    planItem(item, name, foldersAbove);
}

void ZipWriter::planItem(const QString& path, const QString& name, QStringList& foldersAbove)
{
    const QFileInfo info(path);
    if (info.isDir()) {
        // A link back up to a folder that is being added would make the archive endless.
        const QString canonical = info.canonicalFilePath();
        if (foldersAbove.contains(canonical))
            return;
        const QDir folder(path);
        if (!folder.isReadable())
            throw unreadable(path, translate("Permission denied"));
        plan({.name = (name + u'/').toUtf8(),
              .path = {},
              .data = {},
              .size = 0,
              .store = true,
              .modified = toDosDateTime(QDateTime::currentDateTime())});

        // Without QDir::Hidden and QDir::System the listing leaves out hidden items, broken
        // links, sockets, pipes and devices: reading a pipe could wait forever.
        QFileInfoList children = folder.entryInfoList(QDir::AllEntries | QDir::NoDotAndDotDot,
                                                      QDir::NoSort);
        std::sort(children.begin(), children.end(), [](const QFileInfo& a, const QFileInfo& b) {
            return a.fileName().compare(b.fileName(), Qt::CaseSensitive) < 0;
        });
        foldersAbove.append(canonical);
        for (const QFileInfo& child : std::as_const(children))
            planItem(child.filePath(), name + u'/' + child.fileName(), foldersAbove);
        foldersAbove.removeLast();
    } else if (info.isFile()) {
        const QDateTime modified = info.lastModified();
        plan({.name = name.toUtf8(),
              .path = path,
              .data = {},
              .size = info.size(),
              .store = false,
              .modified = toDosDateTime(modified.isValid() ? modified : QDateTime::currentDateTime())});
    } else if (info.exists()) {
        throw OperationError(
            translate("“%1” is neither a file nor a folder").arg(lastPathComponent(path)));
    } else {
        throw unreadable(path, translate("No such file or folder"));
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

    QFile file(entry.path);
    if (!file.open(QIODevice::ReadOnly) || !file.seek(from))
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
    if ((m_archive.size() > m_position && !m_archive.resize(m_position)) || !m_archive.flush())
        throw unwritable();
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
    QFile file(entry.path);
    if (!file.open(QIODevice::ReadOnly))
        throw unreadable(entry.path, file.errorString());
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

bool ZipWriter::hasZip64Sizes(const PlannedEntry& entry) const
{
    return static_cast<quint64>(entry.size) >= m_options.zip64Threshold;
}

QByteArray ZipWriter::localHeader(const PlannedEntry& entry, const WrittenEntry& written) const
{
    const bool zip64 = hasZip64Sizes(entry);
    QByteArray header;
    header.reserve(localHeaderSize + entry.name.size() + 20);
    LittleEndianWriter out(header);
    out.u32(localHeaderSignature);
    appendSharedFields(out, entry, written, zip64 ? versionNeededZip64 : versionNeededPlain,
                       zip64 ? 20 : 0);
    out.bytes(entry.name);
    // A local ZIP64 field always holds both sizes, so its length never depends on them.
    if (zip64) {
        out.u16(zip64ExtraId).u16(16).u64(static_cast<quint64>(written.size))
            .u64(static_cast<quint64>(written.compressedSize));
    }
    return header;
}

void ZipWriter::appendSharedFields(LittleEndianWriter& out, const PlannedEntry& entry,
                                   const WrittenEntry& written, quint16 versionNeeded,
                                   quint16 extraLength) const
{
    const bool zip64 = hasZip64Sizes(entry);
    out.u16(versionNeeded)
        .u16(flagUtf8Name)
        .u16(written.method)
        .u16(entry.modified.time)
        .u16(entry.modified.date)
        .u32(written.crc)
        .u32(zip64 ? zip64Marker32 : static_cast<quint32>(written.compressedSize))
        .u32(zip64 ? zip64Marker32 : static_cast<quint32>(written.size))
        .u16(static_cast<quint16>(entry.name.size()))
        .u16(extraLength);
}

QByteArray ZipWriter::centralRecord(const PlannedEntry& entry, const WrittenEntry& written) const
{
    const bool zip64Sizes = hasZip64Sizes(entry);
    const bool zip64Offset = static_cast<quint64>(written.offset) >= m_options.zip64Threshold;
    const quint16 extraLength = (zip64Sizes || zip64Offset ? 4 : 0) + (zip64Sizes ? 16 : 0)
                                + (zip64Offset ? 8 : 0);
    QByteArray record;
    record.reserve(centralRecordSize + entry.name.size() + extraLength);
    LittleEndianWriter out(record);
    out.u32(centralRecordSignature).u16(versionMadeByUnix);
    appendSharedFields(out, entry, written,
                       extraLength > 0 ? versionNeededZip64 : versionNeededPlain, extraLength);
    out.u16(0)  // comment length
        .u16(0)  // disk number
        .u16(0)  // internal attributes
        .u32(entry.name.endsWith('/') ? folderAttributes : fileAttributes)
        .u32(zip64Offset ? zip64Marker32 : static_cast<quint32>(written.offset))
        .bytes(entry.name);
    // Only the fields marked above follow, in this order.
    if (extraLength > 0) {
        out.u16(zip64ExtraId).u16(extraLength - 4);
        if (zip64Sizes) {
            out.u64(static_cast<quint64>(written.size))
                .u64(static_cast<quint64>(written.compressedSize));
        }
        if (zip64Offset)
            out.u64(static_cast<quint64>(written.offset));
    }
    return record;
}

void ZipWriter::writeEnd()
{
    const qint64 centralOffset = m_position;
    const qint64 centralSize = m_central.size();
    write(m_central);
    m_central = QByteArray();

    const quint64 limit = m_options.zip64Threshold;
    const bool manyEntries = m_count > zip64Marker16;
    const bool farOffset = static_cast<quint64>(centralOffset) >= limit;
    const bool largeCentral = static_cast<quint64>(centralSize) >= limit;

    QByteArray end;
    LittleEndianWriter out(end);
    if (manyEntries || farOffset || largeCentral) {
        const qint64 zip64EndOffset = m_position;
        out.u32(zip64EndRecordSignature)
            .u64(zip64EndRecordSize - 12)  // the record's size after this field
            .u16(versionMadeByUnix)
            .u16(versionNeededZip64)
            .u32(0)  // this disk
            .u32(0)  // the disk where the central directory starts
            .u64(m_count)
            .u64(m_count)
            .u64(static_cast<quint64>(centralSize))
            .u64(static_cast<quint64>(centralOffset));
        out.u32(zip64LocatorSignature).u32(0).u64(static_cast<quint64>(zip64EndOffset)).u32(1);
    }
    const quint16 count16 = manyEntries ? zip64Marker16 : static_cast<quint16>(m_count);
    out.u32(endRecordSignature)
        .u16(0)
        .u16(0)
        .u16(count16)
        .u16(count16)
        .u32(largeCentral ? zip64Marker32 : static_cast<quint32>(centralSize))
        .u32(farOffset ? zip64Marker32 : static_cast<quint32>(centralOffset))
        .u16(0);
    write(end);
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
    return OperationError(translate("Couldn't write “%1”: %2")
                              .arg(lastPathComponent(m_archive.fileName()), m_archive.errorString()));
}

}  // namespace wendrel
