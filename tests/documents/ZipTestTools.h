#pragma once

#include "documents/zip/ZipWriter.h"
#include "support/ToolRun.h"

#include <QByteArray>
#include <QMap>
#include <QString>
#include <QStringList>

#include <functional>
#include <initializer_list>
#include <utility>

// Helpers shared by the ZIP tests: the independent tools that judge our archives, and a reader of little-endian fields that owes nothing to the code under test.
namespace wendrel::test {

// What unzip -t, zipinfo, 7z t and Python's zipfile testzip() say against the archive; empty
// when every one of them accepts it.
QStringList independentCheckFailures(const QString& archive);

// Every item below `folder`, hidden ones included: relative path (folders end in "/") to
// contents.
QMap<QString, QByteArray> treeContents(const QString& folder);

// A folder of the kinds of files people pack: text, an empty file, a non-ASCII name, nesting,
// a hidden file, and inputs of a few megabytes that compress, don't, and do in parts.
void makeSampleTree(const QString& folder);

// Writes an archive through ZipWriter into `path`, filled by `fill`.
void writeArchive(const QString& path, const std::function<void(ZipWriter&)>& fill,
                  ZipWriter::Options options = {});

quint16 le16(const QByteArray& bytes, qsizetype offset);
quint32 le32(const QByteArray& bytes, qsizetype offset);
quint64 le64(const QByteArray& bytes, qsizetype offset);

// Little-endian fields, each a value and its width in bytes, followed by `tail`: a record as
// the format describes it, field by field.
QByteArray record(std::initializer_list<std::pair<quint64, int>> fields, const QByteArray& tail = {});

void putLe16(QByteArray& bytes, qsizetype offset, quint16 value);
void putLe32(QByteArray& bytes, qsizetype offset, quint32 value);
void putLe64(QByteArray& bytes, qsizetype offset, quint64 value);

// The offsets of the central records of an archive without comment, in order.
QList<qsizetype> centralRecordOffsets(const QByteArray& archive);

}  // namespace wendrel::test
