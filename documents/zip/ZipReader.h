#pragma once

#include "ZipFormat.h"

#include <QList>
#include <QString>

#include <functional>

class QIODevice;

namespace wendrel {

// Reads a ZIP archive from an open, seekable device, streaming: only the central directory is
// held in memory, contents pass through in pieces.
//
// Reads what other tools write too: data descriptors, ZIP64 records, archive comments, extra
// fields, legacy names. Entries are stored or deflated; anything else is refused with a
// sentence the user can act on.
class ZipReader {
public:
    struct Entry {
        QString path;                   // as the archive names it, "/" between folders
        QByteArray pathOnDisk;          // what it unpacks to: the UTF-8 of `path`, or raw bytes
        quint16 method = 0;
        qint64 compressedSize = 0;      // negative when the archive gives an absurd value
        qint64 size = 0;                // uncompressed; negative when absurd
        qint64 localHeaderOffset = 0;   // negative when absurd
        quint16 flags = 0;
        zip::DosDateTime modified;
        quint16 versionMadeBy = 0;
        quint32 externalAttributes = 0;

        bool isFolder() const { return path.endsWith(u'/'); }
        bool isEncrypted() const { return flags & zip::flagEncrypted; }
        // A link made on Unix: its contents are where it points.
        bool isSymbolicLink() const;
        // The Unix permission bits, when the maker was a Unix system; 0 otherwise.
        quint32 unixMode() const;
    };

    // Receives the uncompressed bytes written so far and the total; may throw to stop.
    using Progress = std::function<void(qint64 done, qint64 total)>;

    // Finds the end record within the last 65,557 bytes (22 plus the longest comment) and reads
    // the central directory. Throws OperationError "Not a ZIP archive" when there is none. A
    // directory that ends early is not an error: the entries before are kept.
    explicit ZipReader(QIODevice& archive);

    // In the order of the central directory.
    const QList<Entry>& entries() const { return m_entries; }

    // Writes the entry's uncompressed contents to `destination`. Throws OperationError:
    // "Damaged ZIP archive" when the local header is wrong, the contents run past the end of
    // the archive or don't inflate, or inflate to more than the entry's stated size;
    // "Unsupported ZIP compression" for methods other than stored and deflated; "Encrypted
    // ZIP archives aren't supported". The CRC is not checked.
    void extract(const Entry& entry, QIODevice& destination) const;

    struct Extraction {
        int linksLeftOut = 0;  // link entries, which are never made
    };

    // Writes every file and folder entry below `folder`, which should be new and empty, in
    // directory order. Entries under "__MACOSX/" and entries whose path would land outside the
    // folder (or on it) are skipped without a word; links are left out and counted, as a link
    // written first could lead a later entry out of the folder. Nothing is ever written outside.
    // Before the first byte, refuses an archive whose contents would not fit on the disk, and
    // as damaged one whose entries share bytes: records overlapping each other let a few
    // kilobytes unpack to any size. The first error ends the walk; what was written stays.
    Extraction extractAll(const QString& folder, const Progress& progress = {}) const;

private:
    void readCentralDirectory(qint64 offset, quint64 count);
    QByteArray readAt(qint64 offset, qint64 length) const;
    qint64 checkedPayloadStart(const Entry& entry) const;
    bool recordsOverlap() const;
    void copyPayload(const Entry& entry, qint64 payloadStart, QIODevice& destination,
                     const std::function<void(qint64)>& written) const;

    QIODevice& m_archive;
    qint64 m_archiveSize = 0;
    QList<Entry> m_entries;
};

}  // namespace wendrel
