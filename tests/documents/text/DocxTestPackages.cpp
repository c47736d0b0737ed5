#include "DocxTestPackages.h"

#include "documents/docx/DocxReader.h"
#include "documents/docx/DocxWriter.h"
#include "documents/zip/ZipWriter.h"
#include "operations/OperationError.h"

#include <QBuffer>
#include <QDateTime>
#include <QTextDocument>

namespace wendrel::test {

QByteArray docxPackage(QMap<QString, QByteArray> parts)
{
    if (!parts.contains(QStringLiteral("[Content_Types].xml"))) {
        parts.insert(QStringLiteral("[Content_Types].xml"),
                     R"(<?xml version="1.0"?><Types xmlns="http://schemas.openxmlformats.org/package/2006/content-types">)"
                     R"(<Default Extension="xml" ContentType="application/xml"/></Types>)");
    }
    if (!parts.contains(QStringLiteral("_rels/.rels"))) {
        parts.insert(QStringLiteral("_rels/.rels"),
                     R"(<?xml version="1.0"?><Relationships xmlns="http://schemas.openxmlformats.org/package/2006/relationships">)"
                     R"(<Relationship Id="rId1" Type="http://schemas.openxmlformats.org/officeDocument/2006/relationships/officeDocument" Target="word/document.xml"/>)"
                     R"(</Relationships>)");
    }
    QByteArray bytes;
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::WriteOnly);
    ZipWriter zip(buffer);
    for (auto it = parts.cbegin(); it != parts.cend(); ++it)
        zip.addEntry(it.key(), it.value(), ZipWriter::Compression::deflateWhenSmaller, QDateTime::currentDateTime());
    zip.finish();
    return bytes;
}

QByteArray documentXml(const QString& body)
{
    return (QStringLiteral(R"(<?xml version="1.0" encoding="UTF-8" standalone="yes"?>)"
                           R"(<w:document xmlns:w="http://schemas.openxmlformats.org/wordprocessingml/2006/main" )"
                           R"(xmlns:r="http://schemas.openxmlformats.org/officeDocument/2006/relationships" )"
                           R"(xmlns:wp="http://schemas.openxmlformats.org/drawingml/2006/wordprocessingDrawing" )"
                           R"(xmlns:a="http://schemas.openxmlformats.org/drawingml/2006/main" )"
                           R"(xmlns:pic="http://schemas.openxmlformats.org/drawingml/2006/picture" )"
                           R"(xmlns:mc="http://schemas.openxmlformats.org/markup-compatibility/2006" )"
                           R"(xmlns:v="urn:schemas-microsoft-com:vml" xmlns:o="urn:schemas-microsoft-com:office:office">)"
                           R"(<w:body>)")
            + body + QStringLiteral("</w:body></w:document>"))
        .toUtf8();
}

QByteArray docxBytes(const QTextDocument& document)
{
    QByteArray bytes;
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::WriteOnly);
    writeDocx(document, buffer);
    return bytes;
}

ReadResult readDocxFile(const QString& path)
{
    try {
        return {readDocx(path), {}};
    } catch (const OperationError& error) {
        return {nullptr, error.message()};
    }
}

}  // namespace wendrel::test
