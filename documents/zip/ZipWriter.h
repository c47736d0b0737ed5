#pragma once

#include "ZipFormat.h"

#include <QDateTime>
#include <QString>

#include <functional>
#include <vector>

class QIODevice;

namespace wendrel {

class DeflatePipeline;
class OperationError;

// Writes a ZIP archive into an open, seekable device (a file, or a buffer for a small package
// built in memory), streaming.
//
// Entries are planned first (addEntry, addItem) and written by finish() in the order they were
// added: each entry's local header, then its contents, then the central directory and the end
// record. A file's contents pass through in pieces of a megabyte, compressed on all cores, so
// memory stays bounded whatever the archive's size, and the bytes are the same whatever the
// number of threads.
//
// Which entries a folder gives is ZipFolderPlan's rule; the bytes of each record are ZipRecords'.
// An ordinary archive holds exactly: per entry a local header (version 20, flag 0x0800 for UTF-8
// names, no extra field) followed directly by the stored or raw-deflated contents; central
// records made by Unix 3.0 with mode 0644 for files and 040755 plus the MS-DOS folder bit for
// "name/" entries; one end record without comment. Contents are deflated only when that makes
// them strictly smaller. Entries of 4 GiB or more, offsets past 4 GiB and more than 65,535
// entries get ZIP64 fields instead; nothing else changes.
class ZipWriter {
public:
    enum class Compression {
        deflateWhenSmaller,
        store,  // kept as it is, as EPUB's "mimetype" must be
    };

    struct Options {
        int threads = 0;  // compressing threads; 0: one per core
        // Sizes and offsets from this value up go into ZIP64 fields. Lowering it lets a test
        // reach that layout with small files; archives keep the default.
        quint64 zip64Threshold = zip::zip64Marker32;
    };

    // Receives the bytes of contents written so far and the total planned; may throw to stop.
    using Progress = std::function<void(qint64 done, qint64 total)>;

    explicit ZipWriter(QIODevice& archive);
    ZipWriter(QIODevice& archive, Options options);
    ~ZipWriter();
    ZipWriter(const ZipWriter&) = delete;
    ZipWriter& operator=(const ZipWriter&) = delete;

    // Adds contents held in memory. A name ending in "/" is a folder entry (its data empty).
    void addEntry(const QString& name, const QByteArray& data, Compression compression,
                  const QDateTime& modified);

    // Adds a file, or a folder entry followed by everything in the folder, as planItem() lays
    // them out on the real disk: folder entries carry the current time and files their
    // modification time. Names inside folders that are not UTF-8 keep their bytes. Throws
    // OperationError naming the item when it can't be read.
    void addItem(const QString& path, const QString& name);

    // Writes every planned entry, the central directory and the end record; the file ends
    // there. Throws OperationError when an input can't be read or the archive can't be written.
    void finish(const Progress& progress = {});

private:
    struct PlannedEntry {
        QByteArray name;     // UTF-8, or the bytes of a name that isn't
        QByteArray path;     // the file to read, in the system's bytes; empty for contents in memory
        QByteArray data;     // contents in memory
        qint64 size = 0;
        bool store = false;
        zip::DosDateTime modified;
    };

    struct WrittenEntry {
        quint16 method = zip::methodStored;
        quint32 crc = 0;
        qint64 compressedSize = 0;
        qint64 size = 0;
        qint64 offset = 0;
    };

    void plan(PlannedEntry entry);
    QByteArray readPiece(const PlannedEntry& entry, qint64 from, qint64 length, bool last) const;

    void writeEntry(PlannedEntry& entry, DeflatePipeline& pipeline, qint64 pieces,
                    const std::function<void(qint64)>& advance);
    quint32 copyStored(const PlannedEntry& entry);
    void writeEnd();

    QByteArray localHeader(const PlannedEntry& entry, const WrittenEntry& written) const;
    QByteArray centralRecord(const PlannedEntry& entry, const WrittenEntry& written) const;

    void write(QByteArrayView bytes);
    void seek(qint64 position);
    OperationError unwritable() const;

    QIODevice& m_archive;
    Options m_options;
    std::vector<PlannedEntry> m_entries;
    qint64 m_plannedBytes = 0;
    QByteArray m_central;
    quint64 m_count = 0;
    qint64 m_position = 0;
};

}  // namespace wendrel
