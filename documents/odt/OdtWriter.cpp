#include "OdtWriter.h"

#include "OdtContentWriter.h"
#include "OdtNames.h"
#include "documents/zip/ZipWriter.h"
#include "operations/OperationError.h"

#include <QCoreApplication>
#include <QDateTime>
#include <QSaveFile>
#include <QXmlStreamWriter>

namespace wendrel::document {

namespace {

OperationError unsavable(const QString& reason = {})
{
    return OperationError::withReason(QCoreApplication::translate("OdtWriter", "Couldn't save the document"), reason);
}

QByteArray manifestXml(const QList<odt::PackagedPicture>& pictures)
{
    QByteArray bytes;
    QXmlStreamWriter xml(&bytes);
    xml.writeStartDocument();
    xml.writeStartElement(QStringLiteral("manifest:manifest"));
    xml.writeAttribute(QStringLiteral("xmlns:manifest"), QStringLiteral("urn:oasis:names:tc:opendocument:xmlns:manifest:1.0"));
    xml.writeAttribute(QStringLiteral("manifest:version"), QStringLiteral("1.3"));
    auto entry = [&](const QString& path, const QString& type) {
        xml.writeEmptyElement(QStringLiteral("manifest:file-entry"));
        xml.writeAttribute(QStringLiteral("manifest:full-path"), path);
        if (path == u"/")
            xml.writeAttribute(QStringLiteral("manifest:version"), QStringLiteral("1.3"));
        xml.writeAttribute(QStringLiteral("manifest:media-type"), type);
    };
    entry(QStringLiteral("/"), odt::mimeType);
    entry(QStringLiteral("content.xml"), QStringLiteral("text/xml"));
    entry(QStringLiteral("styles.xml"), QStringLiteral("text/xml"));
    entry(QStringLiteral("meta.xml"), QStringLiteral("text/xml"));
    for (const odt::PackagedPicture& picture : pictures)
        entry(picture.path, picture.mimeType);
    xml.writeEndElement();
    xml.writeEndDocument();
    return bytes;
}

QByteArray metaXml()
{
    return QByteArrayLiteral(
        "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
        "<office:document-meta xmlns:office=\"urn:oasis:names:tc:opendocument:xmlns:office:1.0\""
        " xmlns:meta=\"urn:oasis:names:tc:opendocument:xmlns:meta:1.0\" office:version=\"1.3\">"
        "<office:meta><meta:generator>Wendrel</meta:generator></office:meta>"
        "</office:document-meta>\n");
}

}  // namespace

void writeOdt(const QTextDocument& document, const QString& path)
{
    const odt::OdtContent content = odt::writeOdtContent(document);
    const QDateTime now = QDateTime::currentDateTime();

    QSaveFile file(path);
    if (!file.open(QIODevice::WriteOnly))
        throw unsavable(file.errorString());
    ZipWriter zip(file);
    // First and stored, so the package's type can be read at a fixed offset.
    zip.addEntry(QStringLiteral("mimetype"), odt::mimeType.toLatin1(), ZipWriter::Compression::store, now);
    zip.addEntry(QStringLiteral("META-INF/manifest.xml"), manifestXml(content.pictures),
                 ZipWriter::Compression::deflateWhenSmaller, now);
    zip.addEntry(QStringLiteral("meta.xml"), metaXml(), ZipWriter::Compression::deflateWhenSmaller, now);
    zip.addEntry(QStringLiteral("styles.xml"), odt::stylesXml(), ZipWriter::Compression::deflateWhenSmaller, now);
    zip.addEntry(QStringLiteral("content.xml"), content.contentXml, ZipWriter::Compression::deflateWhenSmaller, now);
    for (const odt::PackagedPicture& picture : content.pictures)
        zip.addEntry(picture.path, picture.bytes, ZipWriter::Compression::store, now);  // already compressed
    zip.finish();
    if (!file.commit())
        throw unsavable(file.errorString());
}

}  // namespace wendrel::document
