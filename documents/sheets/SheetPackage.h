#pragma once

#include "documents/zip/ZipReader.h"

#include <QFile>
#include <QXmlStreamReader>

#include <memory>
#include <optional>

namespace wendrel {

// A workbook's ZIP package (XLSX, ODS), opened for its parts. Every failure, from a file that
// is no ZIP at all to a part that would inflate past its limit, is sheet::unreadableTable().
class SheetPackage {
public:
    explicit SheetPackage(const QString& path);

    bool contains(const QString& part) const;

    // A small part (relationships, styles, shared strings) in memory; nothing when missing.
    // One that says it holds more than `maximumBytes` is refused before a byte is inflated.
    std::optional<QByteArray> read(const QString& part, qint64 maximumBytes) const;

    // A part of any size (a sheet) unpacked into a file of its own, to be read in pieces, up to
    // `maximumBytes`. False when the package has no such part.
    bool extract(const QString& part, const QString& destination, qint64 maximumBytes) const;

private:
    const ZipReader::Entry* entry(const QString& part) const;

    QFile m_file;
    std::unique_ptr<ZipReader> m_zip;
};

// Reads workbook XML. Document type declarations are refused outright: no workbook needs one,
// and entities declared in them are how a few bytes of XML expand to gigabytes.
class SheetXmlReader : public QXmlStreamReader {
public:
    explicit SheetXmlReader(const QByteArray& xml) : QXmlStreamReader(xml) {}
    explicit SheetXmlReader(QIODevice* device) : QXmlStreamReader(device) {}

    // The next token; throws sheet::unreadableTable() at a DTD or malformed XML.
    TokenType next();

    // Reads to the end of the current element, gathering its text (that of every element
    // inside it, too, except those named in `skipped`).
    QString elementText(QStringView skipped = {});

    // Throws sheet::unreadableTable() when the XML broke off or is malformed.
    void checkEnded() const;

    // The attribute's value by local name, whatever its namespace prefix.
    QString attribute(QStringView localName) const;
    // ...or in one namespace only, where another one uses the same name.
    QString attribute(const QString& namespaceUri, QLatin1StringView localName) const
    {
        return attributes().value(namespaceUri, localName).toString();
    }
};

// Ends the reading of a workbook when its XML is damaged: `what` names the part for the log.
[[noreturn]] void throwDamaged(const QXmlStreamReader& xml, const QString& what);

}  // namespace wendrel
