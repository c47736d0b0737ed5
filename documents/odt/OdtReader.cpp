#include "OdtReader.h"

#include "OdtBodyReader.h"
#include "OdtNames.h"
#include "OdtStyles.h"
#include "documents/zip/ZipEntryBytes.h"
#include "documents/zip/ZipReader.h"
#include "operations/OperationError.h"

#include <QCoreApplication>
#include <QFile>
#include <QXmlStreamReader>

namespace wendrel::document {

namespace {

// Far beyond the XML of any real text document (a 1,000-page book's is a few megabytes), far
// below what would strain memory.
constexpr qint64 maximumXmlBytes = 64 * 1024 * 1024;
constexpr qint64 maximumPictureBytes = 64 * 1024 * 1024;
constexpr qint64 maximumAllPictureBytes = 512 * 1024 * 1024;

QString translate(const char* text) { return QCoreApplication::translate("OdtReader", text); }

OperationError damaged() { return OperationError(translate("The document is damaged")); }

// Reads one token, refusing what a document never needs: a DTD, whose entities could expand
// without end or reach outside the file.
QXmlStreamReader::TokenType checked(QXmlStreamReader& xml)
{
    if (xml.tokenType() == QXmlStreamReader::DTD || xml.tokenType() == QXmlStreamReader::EntityReference)
        throw OperationError(translate("The document holds a DTD, which isn't allowed"));
    return xml.tokenType();
}

// Checks the whole part before it is read: no DTD, well formed. The reading itself then
// meets no surprises.
void checkXml(const QByteArray& bytes)
{
    QXmlStreamReader xml(bytes);
    while (!xml.atEnd()) {
        xml.readNext();
        checked(xml);
    }
    if (xml.hasError())
        throw damaged();
}

void readStylesPart(const QByteArray& bytes, odt::OdtStyles& styles)
{
    checkXml(bytes);
    QXmlStreamReader xml(bytes);
    if (!xml.readNextStartElement())
        throw damaged();
    while (xml.readNextStartElement()) {
        if (xml.namespaceUri() == odt::officeNs && xml.name() == u"font-face-decls")
            styles.readFontFaces(xml);
        else if (xml.namespaceUri() == odt::officeNs && xml.name() == u"styles")
            styles.readStyles(xml);
        else
            xml.skipCurrentElement();  // page layouts and headers' own automatic styles
    }
}

void readContentPart(const QByteArray& bytes, odt::OdtStyles& styles, const odt::PackagePictures& pictures,
                     QTextDocument& document)
{
    checkXml(bytes);
    QXmlStreamReader xml(bytes);
    if (!xml.readNextStartElement() || xml.namespaceUri() != odt::officeNs)
        throw damaged();
    bool foundText = false;
    while (xml.readNextStartElement()) {
        if (xml.namespaceUri() == odt::officeNs && xml.name() == u"font-face-decls") {
            styles.readFontFaces(xml);
        } else if (xml.namespaceUri() == odt::officeNs && xml.name() == u"automatic-styles") {
            styles.readStyles(xml);
        } else if (xml.namespaceUri() == odt::officeNs && xml.name() == u"body") {
            while (xml.readNextStartElement()) {
                if (xml.namespaceUri() == odt::officeNs && xml.name() == u"text") {
                    odt::readOdtBody(xml, styles, pictures, document);
                    foundText = true;
                } else {
                    xml.skipCurrentElement();
                }
            }
        } else {
            xml.skipCurrentElement();
        }
    }
    if (xml.hasError())
        throw damaged();
    if (!foundText)
        throw OperationError(translate("The file isn't an OpenDocument text"));
}

}  // namespace

std::unique_ptr<QTextDocument> readOdt(const QString& path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        throw OperationError::withReason(translate("Couldn't read the document"), file.errorString());
    const ZipReader zip(file);

    if (const auto type = readZipEntry(zip, QStringLiteral("mimetype"), 256)) {
        if (!type->trimmed().startsWith(odt::mimeType.toLatin1()))
            throw OperationError(translate("The file isn't an OpenDocument text"));
    }
    const auto content = readZipEntry(zip, QStringLiteral("content.xml"), maximumXmlBytes);
    if (!content)
        throw OperationError(translate("The file isn't an OpenDocument text"));

    odt::OdtStyles styles;
    if (const auto stylesBytes = readZipEntry(zip, QStringLiteral("styles.xml"), maximumXmlBytes))
        readStylesPart(*stylesBytes, styles);

    qint64 pictureBytes = 0;
    const odt::PackagePictures pictures = [&](const QString& picturePath) -> std::optional<QByteArray> {
        try {
            auto bytes = readZipEntry(zip, picturePath, maximumPictureBytes);
            if (!bytes || pictureBytes + bytes->size() > maximumAllPictureBytes)
                return std::nullopt;
            pictureBytes += bytes->size();
            return bytes;
        } catch (const OperationError&) {
            return std::nullopt;  // a damaged or oversized picture is left out, the text kept
        }
    };
    auto document = std::make_unique<QTextDocument>();
    readContentPart(*content, styles, pictures, *document);
    return document;
}

}  // namespace wendrel::document
