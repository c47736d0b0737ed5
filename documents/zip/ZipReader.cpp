#include "ZipReader.h"

#include "ExtractionTarget.h"
#include "RawDeflate.h"
#include "ZipEntryName.h"
#include "operations/FileNames.h"
#include "operations/OperationError.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QIODevice>
#include <QStorageInfo>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <limits>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace wendrel {

using namespace zip;

namespace {

constexpr qint64 readBlockSize = 256 * 1024;
constexpr quint32 unixTypeMask = 0170000;
constexpr quint32 unixSymbolicLink = 0120000;

QString translate(const char* text) { return QCoreApplication::translate("ZipReader", text); }

OperationError notAZip() { return OperationError(translate("Not a ZIP archive")); }
OperationError damaged() { return OperationError(translate("Damaged ZIP archive")); }

// Values past what a signed 64-bit size holds are nonsense in any real archive.
qint64 sizeOrAbsurd(quint64 value)
{
    return value > static_cast<quint64>(std::numeric_limits<qint64>::max())
               ? -1
               : static_cast<qint64>(value);
}

OperationError unwritable(const QString& entryPath, const QString& reason)
{
    return OperationError(
        translate("Couldn't write “%1”: %2").arg(lastPathComponent(entryPath), reason));
}

QString systemReason() { return QString::fromLocal8Bit(std::strerror(errno)); }

// Every folder from `root` down to `path`, which lies below it. Works on bytes, as names that
// are not UTF-8 must reach the disk unchanged. Below the root, what exists must be a folder
// itself, never a link to one.
void makeFolders(const QByteArray& root, const QByteArray& path, const QString& entryPath)
{
    if (!QDir().mkpath(QFile::decodeName(root))) {
        throw OperationError(translate("Couldn't create the folder “%1”")
                                 .arg(lastPathComponent(entryPath)));
    }
    for (qsizetype end = root.size() + 1; end <= path.size(); ++end) {
        if (end < path.size() && path[end] != '/')
            continue;
        const QByteArray folder = path.left(end);
        struct stat status {};
        if (::mkdir(folder.constData(), 0777) != 0
            && (errno != EEXIST || ::lstat(folder.constData(), &status) != 0 || !S_ISDIR(status.st_mode))) {
            throw OperationError(translate("Couldn't create the folder “%1”")
                                     .arg(lastPathComponent(entryPath)));
        }
    }
}

// A new file, never through a link: the folder is the archive's alone, so a link found there
// is out of place and not to be followed.
void openNewFile(QFile& file, const QByteArray& path, const QString& entryPath)
{
    const int descriptor =
        ::open(path.constData(), O_WRONLY | O_CREAT | O_TRUNC | O_NOFOLLOW | O_CLOEXEC, 0666);
    if (descriptor < 0)
        throw unwritable(entryPath, systemReason());
    if (!file.open(descriptor, QIODevice::WriteOnly, QFileDevice::AutoCloseHandle)) {
        ::close(descriptor);
        throw unwritable(entryPath, file.errorString());
    }
}

// Modification time and, for entries made on Unix, the execute bits: what users expect back.
void restoreAttributes(QFile& file, const ZipReader::Entry& entry)
{
    const QDateTime modified = fromDosDateTime(entry.modified);
    if (modified.isValid())
        file.setFileTime(modified, QFileDevice::FileModificationTime);
    const quint32 execute = entry.unixMode() & 0111;
    struct stat status {};
    if (execute != 0 && ::fstat(file.handle(), &status) == 0)
        ::fchmod(file.handle(), (status.st_mode & 07777) | execute);
}

}  // namespace

bool ZipReader::Entry::isSymbolicLink() const
{
    return (unixMode() & unixTypeMask) == unixSymbolicLink;
}

quint32 ZipReader::Entry::unixMode() const
{
    return (versionMadeBy >> 8) == hostUnix ? externalAttributes >> 16 : 0;
}

ZipReader::ZipReader(QIODevice& archive) : m_archive(archive), m_archiveSize(archive.size())
{
    if (m_archiveSize < endRecordSize)
        throw notAZip();

    // The end record sits at the very end unless a comment follows it; the first signature
    // found from the end wins.
    const qint64 tailStart = std::max<qint64>(0, m_archiveSize - endRecordSearchSpan);
    const QByteArray tail = readAt(tailStart, m_archiveSize - tailStart);
    qsizetype position = tail.size() - endRecordSize;
    while (position >= 0 && readU32(tail, position) != endRecordSignature)
        --position;
    if (position < 0)
        throw notAZip();

    quint64 count = readU16(tail, position + 10);
    qint64 centralOffset = readU32(tail, position + 16);

    // Archives with more entries or larger than the 16- and 32-bit fields hold carry the real
    // values in a ZIP64 end record, which a locator just before the end record points to.
    const qint64 endOffset = tailStart + position;
    if (endOffset >= zip64LocatorSize) {
        const QByteArray locator = readAt(endOffset - zip64LocatorSize, zip64LocatorSize);
        if (locator.size() == zip64LocatorSize && readU32(locator, 0) == zip64LocatorSignature) {
            const qint64 recordOffset = sizeOrAbsurd(readU64(locator, 8));
            if (recordOffset < 0 || recordOffset > endOffset - zip64EndRecordSize)
                throw damaged();
            const QByteArray record = readAt(recordOffset, zip64EndRecordSize);
            if (record.size() != zip64EndRecordSize || readU32(record, 0) != zip64EndRecordSignature)
                throw damaged();
            count = readU64(record, 32);
            centralOffset = sizeOrAbsurd(readU64(record, 48));
        }
    }
    readCentralDirectory(centralOffset, count);
}

void ZipReader::readCentralDirectory(qint64 offset, quint64 count)
{
    if (count == 0 || offset < 0 || offset >= m_archiveSize || !m_archive.seek(offset))
        return;
    for (quint64 index = 0; index < count; ++index) {
        const QByteArray fixed = m_archive.read(centralRecordSize);
        if (fixed.size() < centralRecordSize || readU32(fixed, 0) != centralRecordSignature)
            return;  // the directory ends early: keep what was read
        const quint16 nameLength = readU16(fixed, 28);
        const quint16 extraLength = readU16(fixed, 30);
        const quint16 commentLength = readU16(fixed, 32);
        const QByteArray variable = m_archive.read(nameLength + extraLength + commentLength);
        if (variable.size() < nameLength + extraLength)
            return;
        const QByteArrayView name = QByteArrayView(variable).first(nameLength);
        const QByteArrayView extras = QByteArrayView(variable).sliced(nameLength, extraLength);

        Entry entry;
        entry.flags = readU16(fixed, 8);
        entry.versionMadeBy = readU16(fixed, 4);
        EntryName decoded = decodeEntryName(name, entry.flags & flagUtf8Name, extras,
                                            (entry.versionMadeBy >> 8) == hostUnix);
        entry.path = std::move(decoded.text);
        entry.pathOnDisk = std::move(decoded.onDisk);
        entry.method = readU16(fixed, 10);
        entry.modified = {readU16(fixed, 12), readU16(fixed, 14)};
        entry.externalAttributes = readU32(fixed, 38);

        // A 32-bit field at its maximum means the value is in the ZIP64 field, which holds
        // only the values so marked, in this order.
        quint64 size = readU32(fixed, 24);
        quint64 compressedSize = readU32(fixed, 20);
        quint64 localHeaderOffset = readU32(fixed, 42);
        const QByteArrayView zip64 = findExtraField(extras, zip64ExtraId);
        qsizetype zip64Used = 0;
        for (quint64* value : {&size, &compressedSize, &localHeaderOffset}) {
            if (*value == zip64Marker32 && zip64Used + 8 <= zip64.size()) {
                *value = readU64(zip64, zip64Used);
                zip64Used += 8;
            }
        }
        entry.size = sizeOrAbsurd(size);
        entry.compressedSize = sizeOrAbsurd(compressedSize);
        entry.localHeaderOffset = sizeOrAbsurd(localHeaderOffset);
        m_entries.append(std::move(entry));
    }
}

QByteArray ZipReader::readAt(qint64 offset, qint64 length) const
{
    if (!m_archive.seek(offset))
        return {};
    return m_archive.read(length);
}

void ZipReader::extract(const Entry& entry, QIODevice& destination) const
{
    copyPayload(entry, checkedPayloadStart(entry), destination, {});
}

qint64 ZipReader::checkedPayloadStart(const Entry& entry) const
{
    if (entry.isEncrypted())
        throw OperationError(translate("Encrypted ZIP archives aren't supported"));
    if (entry.localHeaderOffset < 0 || entry.compressedSize < 0 || entry.size < 0)
        throw damaged();

    const QByteArray header = readAt(entry.localHeaderOffset, localHeaderSize);
    if (header.size() < localHeaderSize || readU32(header, 0) != localHeaderSignature)
        throw damaged();
    // The local lengths, which may differ from the central ones.
    const qint64 payloadStart =
        entry.localHeaderOffset + localHeaderSize + readU16(header, 26) + readU16(header, 28);
    if (entry.compressedSize > m_archiveSize - payloadStart)
        throw damaged();  // the contents would run past the end of the archive
    if (entry.method != methodStored && entry.method != methodDeflated)
        throw OperationError(translate("Unsupported ZIP compression"));
    return payloadStart;
}

void ZipReader::copyPayload(const Entry& entry, qint64 payloadStart, QIODevice& destination,
                            const std::function<void(qint64)>& written) const
{
    if (!m_archive.seek(payloadStart))
        throw damaged();

    QByteArray block(std::min(readBlockSize, std::max<qint64>(entry.compressedSize, 1)),
                     Qt::Uninitialized);
    qint64 remaining = entry.compressedSize;
    const auto readMore = [&]() -> QByteArrayView {
        const qint64 read = m_archive.read(block.data(), std::min<qint64>(remaining, block.size()));
        if (read <= 0)
            return {};
        remaining -= read;
        return QByteArrayView(block.constData(), read);
    };
    const auto write = [&](QByteArrayView bytes) {
        if (destination.write(bytes.data(), bytes.size()) != bytes.size())
            throw unwritable(entry.path, destination.errorString());
        if (written)
            written(bytes.size());
    };

    if (entry.method == methodStored) {
        // An entry never gets more than its stated size: that is what the disk check counted.
        if (entry.compressedSize > entry.size)
            throw damaged();
        while (remaining > 0) {
            const QByteArrayView bytes = readMore();
            if (bytes.isEmpty())
                throw damaged();
            write(bytes);
        }
        return;
    }

    RawInflater inflater;
    switch (inflater.inflate(readMore, write, entry.size)) {
    case RawInflater::Result::finished:
        return;
    case RawInflater::Result::damaged:
    case RawInflater::Result::tooLong:
        throw damaged();
    }
}

bool ZipReader::recordsOverlap() const
{
    // Each record's local header and contents, by where they start. Records whose header can't
    // be read are left to the walk, which reports them when it gets there.
    struct Span {
        qint64 start;
        qint64 end;
    };
    QList<Span> spans;
    spans.reserve(m_entries.size());
    for (const Entry& entry : m_entries) {
        if (entry.localHeaderOffset < 0 || entry.compressedSize < 0)
            continue;
        const QByteArray header = readAt(entry.localHeaderOffset, localHeaderSize);
        if (header.size() < localHeaderSize || readU32(header, 0) != localHeaderSignature)
            continue;
        const qint64 payloadStart =
            entry.localHeaderOffset + localHeaderSize + readU16(header, 26) + readU16(header, 28);
        spans.append({entry.localHeaderOffset,
                      payloadStart + std::min(entry.compressedSize, m_archiveSize)});
    }
    std::sort(spans.begin(), spans.end(),
              [](const Span& a, const Span& b) { return a.start < b.start; });
    qint64 reached = 0;
    for (const Span& span : std::as_const(spans)) {
        if (span.start < reached)
            return true;
        reached = std::max(reached, span.end);
    }
    return false;
}

ZipReader::Extraction ZipReader::extractAll(const QString& folder, const Progress& progress) const
{
    const QString base = QDir::cleanPath(QDir(folder).absolutePath());
    const QByteArray root = QFile::encodeName(base);

    struct Target {
        const Entry* entry;
        QByteArray path;
    };
    QList<Target> targets;
    Extraction extraction;
    qint64 total = 0;
    for (const Entry& entry : m_entries) {
        if (entry.path.startsWith(QLatin1String("__MACOSX/")))
            continue;
        std::optional<QByteArray> target = extractionTarget(root, entry.pathOnDisk);
        if (!target)
            continue;
        if (entry.size < 0)
            throw damaged();
        if (!entry.isFolder() && entry.isSymbolicLink()) {
            ++extraction.linksLeftOut;
            continue;
        }
        total += std::min(entry.size, std::numeric_limits<qint64>::max() - total);
        targets.append({&entry, std::move(*target)});
    }
    if (recordsOverlap())
        throw damaged();

    // Entries never inflate past their stated sizes, so this total bounds what gets written.
    const QStorageInfo storage(base);
    if (storage.isValid() && storage.bytesAvailable() >= 0 && total > storage.bytesAvailable())
        throw OperationError(translate("Not enough free disk space to unpack this ZIP archive"));

    qint64 done = 0;
    const auto advance = [&](qint64 bytes) {
        done += bytes;
        if (progress)
            progress(done, total);
    };
    advance(0);
    QByteArray lastFolder;
    for (const Target& target : std::as_const(targets)) {
        const Entry& entry = *target.entry;
        if (entry.isFolder()) {
            makeFolders(root, target.path, entry.path);
            continue;
        }
        const QByteArray parent = target.path.left(target.path.lastIndexOf('/'));
        if (parent != lastFolder) {
            makeFolders(root, parent, entry.path);
            lastFolder = parent;
        }
        // Checked before the file is made, so an entry that can't be read leaves no empty file.
        const qint64 payloadStart = checkedPayloadStart(entry);
        QFile file;
        openNewFile(file, target.path, entry.path);
        copyPayload(entry, payloadStart, file, advance);
        // Flushed first: a later write would set the modification time anew.
        if (!file.flush())
            throw unwritable(entry.path, file.errorString());
        restoreAttributes(file, entry);
        file.close();
    }
    return extraction;
}

}  // namespace wendrel
