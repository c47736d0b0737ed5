#include "DocxStyles.h"

#include "DocxXml.h"

#include <QRegularExpression>

namespace wendrel::docx {

namespace {

constexpr int longestStyleChain = 32;

int headingLevelOfName(const QString& name)
{
    if (name.compare(u"Title", Qt::CaseInsensitive) == 0)
        return 1;
    static const QRegularExpression heading(QStringLiteral("^heading\\s*([1-9])$"),
                                            QRegularExpression::CaseInsensitiveOption);
    const QRegularExpressionMatch match = heading.match(name.trimmed());
    return match.hasMatch() ? std::min(6, match.captured(1).toInt()) : 0;
}

}  // namespace

StyleSheet StyleSheet::parse(const QByteArray& xml)
{
    StyleSheet sheet;
    PartReader reader(xml, QStringLiteral("word/styles.xml"));
    while (reader.next()) {
        if (!reader.isStart() || reader.elementNamespace() != Namespace::word)
            continue;
        if (reader.name() == u"rPrDefault") {
            const int depth = reader.depth();
            while (reader.next() && reader.depth() >= depth) {
                if (reader.isStart() && reader.is(Namespace::word, u"rPr"))
                    sheet.m_defaults = readRunProperties(reader);
            }
            continue;
        }
        if (reader.name() != u"style")
            continue;
        const QString type = reader.attribute(u"type").value_or(QStringLiteral("paragraph"));
        const QString id = reader.attribute(u"styleId").value_or(QString());
        const bool isDefault = reader.attribute(u"default").value_or(QString()) == u"1"
                               || reader.attribute(u"default").value_or(QString()) == u"true";
        Style style;
        style.id = id;
        const int depth = reader.depth();
        while (reader.next() && reader.depth() >= depth) {
            if (!reader.isStart())
                continue;
            if (reader.depth() != depth + 1 || reader.elementNamespace() != Namespace::word) {
                reader.skipElement();
                continue;
            }
            if (reader.name() == u"rPr") {
                style.run = readRunProperties(reader);
                continue;
            }
            if (reader.name() == u"pPr") {
                const ParagraphProperties paragraph = readParagraphProperties(reader);
                style.outlineLevel = paragraph.outlineLevel;
                style.numbering = paragraph.numbering;
                continue;
            }
            if (reader.name() == u"basedOn")
                style.basedOn = reader.attribute(u"val").value_or(QString());
            else if (reader.name() == u"name")
                style.name = reader.attribute(u"val").value_or(QString());
            reader.skipElement();
        }
        if (type == u"paragraph" && isDefault)
            sheet.m_defaultParagraphStyle = id;
        if (type != u"table")  // table styles' conditional formats are not followed
            sheet.m_styles.insert(id, style);
    }
    return sheet;
}

QList<const StyleSheet::Style*> StyleSheet::chain(const QString& styleId) const
{
    QList<const Style*> result;
    QString id = styleId;
    while (!id.isEmpty() && result.size() < longestStyleChain) {
        const auto found = m_styles.constFind(id);
        if (found == m_styles.cend() || result.contains(&found.value()))
            break;
        result.append(&found.value());
        id = found->basedOn;
    }
    return result;
}

int StyleSheet::headingLevel(const QString& styleId) const
{
    for (const Style* style : chain(styleId)) {
        if (style->outlineLevel)
            return *style->outlineLevel <= 8 ? std::min(6, *style->outlineLevel + 1) : 0;
        if (const int level = headingLevelOfName(style->name.isEmpty() ? style->id : style->name))
            return level;
    }
    return 0;
}

NumberingReference StyleSheet::numbering(const QString& styleId) const
{
    NumberingReference result;
    for (const Style* style : chain(styleId)) {
        if (!result.numberingId)
            result.numberingId = style->numbering.numberingId;
        if (!result.level)
            result.level = style->numbering.level;
    }
    return result;
}

RunProperties StyleSheet::runProperties(const QString& styleId, bool withDefaults) const
{
    RunProperties result = withDefaults ? m_defaults : RunProperties();
    const QList<const Style*> styles = chain(styleId);
    for (auto it = styles.crbegin(); it != styles.crend(); ++it)
        result.overlay((*it)->run);
    result.style.clear();
    return result;
}

}  // namespace wendrel::docx
