#pragma once

#include <QByteArray>
#include <QString>
#include <QStringView>
#include <QXmlStreamReader>

#include <optional>

namespace wendrel::docx {

// The namespaces a WordprocessingML package uses, in their transitional and strict spellings.
enum class Namespace { other, word, relationships, drawing, wordDrawing, picture, vml, markup, package, math };

Namespace namespaceOf(QStringView uri);

// A reader over one XML part that refuses what no real part has: a DTD (so no entity can
// expand), and turns any well-formedness error into an OperationError naming the part.
class PartReader {
public:
    PartReader(const QByteArray& xml, QString partName);

    // The next token; throws OperationError on a DTD or a malformed part. False at the end.
    bool next();

    QXmlStreamReader::TokenType token() const { return m_xml.tokenType(); }
    bool isStart() const { return m_xml.isStartElement(); }
    bool isEnd() const { return m_xml.isEndElement(); }
    bool isText() const { return m_xml.isCharacters(); }

    // The current element is `name` in `ns`.
    bool is(Namespace ns, QStringView name) const;
    Namespace elementNamespace() const;
    QStringView name() const { return m_xml.name(); }
    QStringView text() const { return m_xml.text(); }

    // The attribute with this local name, whatever its namespace.
    std::optional<QString> attribute(QStringView localName) const;

    // "w:val" of a toggle such as <w:b/>: on unless "0", "false", "off" or "none".
    bool toggleValue() const;

    // Moves past the current start element's end, its contents unread.
    void skipElement();

    // Depth of open elements, the current one included.
    int depth() const { return m_depth; }

private:
    QXmlStreamReader m_xml;
    QString m_partName;
    int m_depth = 0;
};

// The whole-number value of an attribute, or nothing when it is absent or not a number.
std::optional<qint64> wholeNumber(const std::optional<QString>& value);

}  // namespace wendrel::docx
