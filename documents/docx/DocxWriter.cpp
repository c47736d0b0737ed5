#include "DocxWriter.h"

#include "DocxBodyWriter.h"
#include "DocxTemplates.h"
#include "documents/zip/ZipWriter.h"

#include <QDateTime>
#include <QTextDocument>

namespace wendrel {

namespace {

QByteArray corePropertiesXml(const QTextDocument& document, const QDateTime& now)
{
    const QString title = docx::xmlSafe(document.metaInformation(QTextDocument::DocumentTitle)).toHtmlEscaped();
    const QString created = now.toUTC().toString(Qt::ISODate);
    return QStringLiteral(R"(<?xml version="1.0" encoding="UTF-8" standalone="yes"?>)"
                          "\n"
                          R"(<cp:coreProperties xmlns:cp="http://schemas.openxmlformats.org/package/2006/metadata/core-properties" )"
                          R"(xmlns:dc="http://purl.org/dc/elements/1.1/" xmlns:dcterms="http://purl.org/dc/terms/" )"
                          R"(xmlns:xsi="http://www.w3.org/2001/XMLSchema-instance">)"
                          "%1"
                          R"(<dcterms:created xsi:type="dcterms:W3CDTF">%2</dcterms:created>)"
                          R"(<dcterms:modified xsi:type="dcterms:W3CDTF">%2</dcterms:modified>)"
                          R"(</cp:coreProperties>)")
        .arg(title.isEmpty() ? QString() : QStringLiteral("<dc:title>%1</dc:title>").arg(title), created)
        .toUtf8();
}

}  // namespace

void writeDocx(const QTextDocument& document, QIODevice& output)
{
    const docx::WrittenBody body = docx::writeBody(document);
    const QDateTime now = QDateTime::currentDateTime();
    const auto compressed = ZipWriter::Compression::deflateWhenSmaller;

    ZipWriter zip(output);
    zip.addEntry(QStringLiteral("[Content_Types].xml"), docx::contentTypesXml(), compressed, now);
    zip.addEntry(QStringLiteral("_rels/.rels"), docx::packageRelationshipsXml(), compressed, now);
    zip.addEntry(QStringLiteral("word/document.xml"), body.documentXml, compressed, now);
    zip.addEntry(QStringLiteral("word/_rels/document.xml.rels"),
                 docx::documentRelationshipsHead() + body.relationships + "</Relationships>", compressed, now);
    zip.addEntry(QStringLiteral("word/styles.xml"), docx::stylesXml(), compressed, now);
    zip.addEntry(QStringLiteral("word/numbering.xml"), docx::numberingHead() + body.numberings + "</w:numbering>",
                 compressed, now);
    zip.addEntry(QStringLiteral("word/settings.xml"), docx::settingsXml(), compressed, now);
    for (const docx::WrittenBody::Media& media : body.media)
        zip.addEntry(media.partName, media.bytes, compressed, now);
    zip.addEntry(QStringLiteral("docProps/core.xml"), corePropertiesXml(document, now), compressed, now);
    zip.addEntry(QStringLiteral("docProps/app.xml"), docx::appPropertiesXml(), compressed, now);
    zip.finish();
}

}  // namespace wendrel
