#include "DocxXml.h"

#include "operations/OperationError.h"

#include <QCoreApplication>

namespace wendrel::docx {

Namespace namespaceOf(QStringView uri)
{
    struct Known {
        QStringView uri;
        Namespace ns;
    };
    static constexpr Known known[] = {
        {u"http://schemas.openxmlformats.org/wordprocessingml/2006/main", Namespace::word},
        {u"http://purl.oclc.org/ooxml/wordprocessingml/main", Namespace::word},
        {u"http://schemas.openxmlformats.org/officeDocument/2006/relationships", Namespace::relationships},
        {u"http://purl.oclc.org/ooxml/officeDocument/relationships", Namespace::relationships},
        {u"http://schemas.openxmlformats.org/drawingml/2006/main", Namespace::drawing},
        {u"http://purl.oclc.org/ooxml/drawingml/main", Namespace::drawing},
        {u"http://schemas.openxmlformats.org/drawingml/2006/wordprocessingDrawing", Namespace::wordDrawing},
        {u"http://purl.oclc.org/ooxml/drawingml/wordprocessingDrawing", Namespace::wordDrawing},
        {u"http://schemas.openxmlformats.org/drawingml/2006/picture", Namespace::picture},
        {u"http://purl.oclc.org/ooxml/drawingml/picture", Namespace::picture},
        {u"urn:schemas-microsoft-com:vml", Namespace::vml},
        {u"http://schemas.openxmlformats.org/markup-compatibility/2006", Namespace::markup},
        {u"http://schemas.openxmlformats.org/package/2006/relationships", Namespace::package},
        {u"http://schemas.openxmlformats.org/officeDocument/2006/math", Namespace::math},
        {u"http://purl.oclc.org/ooxml/officeDocument/math", Namespace::math},
    };
    for (const Known& entry : known) {
        if (entry.uri == uri)
            return entry.ns;
    }
    return Namespace::other;
}

PartReader::PartReader(const QByteArray& xml, QString partName) : m_xml(xml), m_partName(std::move(partName))
{
}

bool PartReader::next()
{
    if (m_xml.atEnd())
        return false;
    const QXmlStreamReader::TokenType type = m_xml.readNext();
    if (type == QXmlStreamReader::DTD || type == QXmlStreamReader::EntityReference) {
        // Real parts never declare a DTD; one that does may be building entity bombs.
        throw OperationError(QCoreApplication::translate("Docx", "“%1” declares a DTD").arg(m_partName));
    }
    if (type == QXmlStreamReader::Invalid || m_xml.hasError()) {
        throw OperationError(QCoreApplication::translate("Docx", "“%1” is not well-formed XML: %2")
                                 .arg(m_partName, m_xml.errorString()));
    }
    if (type == QXmlStreamReader::StartElement)
        ++m_depth;
    else if (type == QXmlStreamReader::EndElement)
        --m_depth;
    return type != QXmlStreamReader::EndDocument;
}

bool PartReader::is(Namespace ns, QStringView localName) const
{
    return m_xml.name() == localName && elementNamespace() == ns;
}

Namespace PartReader::elementNamespace() const
{
    return namespaceOf(m_xml.namespaceUri());
}

std::optional<QString> PartReader::attribute(QStringView localName) const
{
    for (const QXmlStreamAttribute& attribute : m_xml.attributes()) {
        if (attribute.name() == localName)
            return attribute.value().toString();
    }
    return std::nullopt;
}

bool PartReader::toggleValue() const
{
    const std::optional<QString> value = attribute(u"val");
    if (!value)
        return true;
    const QString lowered = value->trimmed().toLower();
    return lowered != u"0" && lowered != u"false" && lowered != u"off" && lowered != u"none";
}

void PartReader::skipElement()
{
    const int depthOfElement = m_depth;
    while (m_depth >= depthOfElement && next()) {
    }
}

std::optional<qint64> wholeNumber(const std::optional<QString>& value)
{
    if (!value)
        return std::nullopt;
    bool ok = false;
    const qint64 number = value->trimmed().toLongLong(&ok);
    return ok ? std::optional<qint64>(number) : std::nullopt;
}

}  // namespace wendrel::docx
