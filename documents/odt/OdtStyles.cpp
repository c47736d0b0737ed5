#include "OdtStyles.h"

#include "OdtNames.h"
#include "documents/text/FontFamilies.h"

#include <QRegularExpression>
#include <QXmlStreamReader>

namespace wendrel::document::odt {

namespace {

// Parent chains longer than this are loops or hostile.
constexpr int maximumStyleDepth = 32;
constexpr int maximumListLevels = 10;

QString key(const QString& family, const QString& name) { return family + u'/' + name; }

int headingLevelFromName(const QString& name)
{
    // "Heading 1", or its encoded name "Heading_20_1".
    static const QRegularExpression heading(QStringLiteral("^Heading(?: |_20_)([1-9][0-9]?)$"));
    const QRegularExpressionMatch match = heading.match(name);
    return match.hasMatch() ? std::clamp(match.captured(1).toInt(), 1, 6) : 0;
}

std::optional<bool> boolean(const QStringView value, bool (*meaning)(QStringView))
{
    if (value.isEmpty())
        return std::nullopt;
    return meaning(value);
}

}  // namespace

TextProperties TextProperties::overlaidWith(const TextProperties& over) const
{
    TextProperties result = *this;
    if (over.bold)
        result.bold = over.bold;
    if (over.italic)
        result.italic = over.italic;
    if (over.underline)
        result.underline = over.underline;
    if (over.strike)
        result.strike = over.strike;
    if (over.code)
        result.code = over.code;
    return result;
}

void OdtStyles::readFontFaces(QXmlStreamReader& xml)
{
    while (xml.readNextStartElement()) {
        if (xml.namespaceUri() == styleNs && xml.name() == u"font-face") {
            const auto attributes = xml.attributes();
            const QString name = attributes.value(styleNs, QStringLiteral("name")).toString();
            const bool fixed = attributes.value(styleNs, QStringLiteral("font-pitch")) == u"fixed"
                               || isMonospaceFamily(attributes.value(svgNs, QStringLiteral("font-family")).toString())
                               || isMonospaceFamily(name);
            m_fontIsMonospace.insert(name, fixed);
        }
        xml.skipCurrentElement();
    }
}

void OdtStyles::readStyles(QXmlStreamReader& xml)
{
    while (xml.readNextStartElement()) {
        if (xml.namespaceUri() == styleNs && xml.name() == u"style")
            readStyle(xml);
        else if (xml.namespaceUri() == textNs && xml.name() == u"list-style")
            readListStyle(xml);
        else
            xml.skipCurrentElement();
    }
}

void OdtStyles::readStyle(QXmlStreamReader& xml)
{
    const auto attributes = xml.attributes();
    const QString family = attributes.value(styleNs, QStringLiteral("family")).toString();
    const QString name = attributes.value(styleNs, QStringLiteral("name")).toString();
    Style style;
    style.parent = attributes.value(styleNs, QStringLiteral("parent-style-name")).toString();
    style.displayName = attributes.value(styleNs, QStringLiteral("display-name")).toString();
    style.listStyle = attributes.value(styleNs, QStringLiteral("list-style-name")).toString();
    style.outlineLevel = attributes.value(styleNs, QStringLiteral("default-outline-level")).toInt();
    while (xml.readNextStartElement()) {
        if (xml.namespaceUri() == styleNs && xml.name() == u"text-properties")
            style.text = readTextProperties(xml);
        xml.skipCurrentElement();
    }
    if (!name.isEmpty())
        m_styles.insert(key(family, name), style);
}

TextProperties OdtStyles::readTextProperties(QXmlStreamReader& xml) const
{
    const auto attributes = xml.attributes();
    TextProperties text;
    text.bold = boolean(attributes.value(foNs, QStringLiteral("font-weight")), [](QStringView value) {
        bool number = false;
        const int weight = value.toInt(&number);
        return number ? weight >= 600 : value == u"bold";
    });
    text.italic = boolean(attributes.value(foNs, QStringLiteral("font-style")),
                          [](QStringView value) { return value == u"italic" || value == u"oblique"; });
    text.underline = boolean(attributes.value(styleNs, QStringLiteral("text-underline-style")),
                             [](QStringView value) { return value != u"none"; });
    text.strike = boolean(attributes.value(styleNs, QStringLiteral("text-line-through-style")),
                          [](QStringView value) { return value != u"none"; });
    if (attributes.value(styleNs, QStringLiteral("text-line-through-type")) == u"none")
        text.strike = false;
    const QString fontName = attributes.value(styleNs, QStringLiteral("font-name")).toString();
    const QString fontFamily = attributes.value(foNs, QStringLiteral("font-family")).toString();
    if (!fontName.isEmpty())
        text.code = m_fontIsMonospace.value(fontName, isMonospaceFamily(fontName));
    else if (!fontFamily.isEmpty())
        text.code = anyMonospaceFamily(fontFamily.split(u','));
    if (attributes.value(styleNs, QStringLiteral("font-pitch")) == u"fixed")
        text.code = true;
    return text;
}

void OdtStyles::readListStyle(QXmlStreamReader& xml)
{
    const QString name = xml.attributes().value(styleNs, QStringLiteral("name")).toString();
    QList<bool> numbered(maximumListLevels, false);
    while (xml.readNextStartElement()) {
        const int level = xml.attributes().value(textNs, QStringLiteral("level")).toInt();
        if (xml.namespaceUri() == textNs && level >= 1 && level <= maximumListLevels) {
            // A numbered level says so; one without a number format ("") shows no number.
            numbered[level - 1] = xml.name() == u"list-level-style-number"
                                  && !xml.attributes().value(styleNs, QStringLiteral("num-format")).isEmpty();
        }
        xml.skipCurrentElement();
    }
    if (!name.isEmpty())
        m_listLevels.insert(name, numbered);
}

const OdtStyles::Style* OdtStyles::find(const QString& family, const QString& name) const
{
    const auto it = m_styles.constFind(key(family, name));
    return it == m_styles.constEnd() ? nullptr : &*it;
}

TextProperties OdtStyles::textProperties(const QString& family, const QString& name) const
{
    QList<const Style*> chain;
    for (const Style* style = find(family, name); style && chain.size() < maximumStyleDepth;
         style = find(family, style->parent))
        chain.prepend(style);
    TextProperties text;
    for (const Style* style : chain)
        text = text.overlaidWith(style->text);
    return text;
}

int OdtStyles::headingLevel(const QString& paragraphStyle) const
{
    QString name = paragraphStyle;
    for (int depth = 0; depth < maximumStyleDepth && !name.isEmpty(); ++depth) {
        const Style* style = find(QStringLiteral("paragraph"), name);
        if (const int level = headingLevelFromName(style && !style->displayName.isEmpty() ? style->displayName : name))
            return level;
        if (!style)
            return 0;
        if (style->outlineLevel > 0)
            return std::min(style->outlineLevel, 6);
        name = style->parent;
    }
    return 0;
}

QString OdtStyles::listStyleOf(const QString& paragraphStyle) const
{
    QString name = paragraphStyle;
    for (int depth = 0; depth < maximumStyleDepth && !name.isEmpty(); ++depth) {
        const Style* style = find(QStringLiteral("paragraph"), name);
        if (!style)
            return {};
        if (!style->listStyle.isEmpty())
            return style->listStyle;
        name = style->parent;
    }
    return {};
}

bool OdtStyles::isNumbered(const QString& listStyle, int level) const
{
    const auto it = m_listLevels.constFind(listStyle);
    if (it == m_listLevels.constEnd() || level < 1)
        return false;
    return it->at(std::min(level, maximumListLevels) - 1);
}

}  // namespace wendrel::document::odt
