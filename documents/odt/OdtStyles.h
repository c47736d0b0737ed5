#pragma once

#include <QHash>
#include <QList>
#include <QString>

#include <optional>

class QXmlStreamReader;

namespace wendrel::document::odt {

// The inline styles a style sets; unset ones come from its parent or the surrounding text.
struct TextProperties {
    std::optional<bool> bold;
    std::optional<bool> italic;
    std::optional<bool> underline;
    std::optional<bool> strike;
    std::optional<bool> code;

    // `over` wins where it says something.
    TextProperties overlaidWith(const TextProperties& over) const;
};

// The styles of an OpenDocument text: named ones (styles.xml) and automatic ones (content.xml),
// with font faces and list styles, as far as the document model needs them.
class OdtStyles {
public:
    // Reads the children of office:font-face-decls, office:styles or office:automatic-styles;
    // the reader stands on that element's start and ends on its end.
    void readFontFaces(QXmlStreamReader& xml);
    void readStyles(QXmlStreamReader& xml);

    // Everything a text or paragraph style sets, its parents' settings included.
    TextProperties textProperties(const QString& family, const QString& name) const;

    // The heading level (1-6) a paragraph style makes, from its default outline level or its
    // name ("Heading 2"), its parents' included; 0 when none.
    int headingLevel(const QString& paragraphStyle) const;

    // The list style a paragraph style names, its parents' included.
    QString listStyleOf(const QString& paragraphStyle) const;

    // Whether level `level` (1 for the outermost) of a list style is numbered.
    bool isNumbered(const QString& listStyle, int level) const;

private:
    struct Style {
        QString parent;
        QString displayName;
        QString listStyle;
        int outlineLevel = 0;
        TextProperties text;
    };

    void readStyle(QXmlStreamReader& xml);
    void readListStyle(QXmlStreamReader& xml);
    TextProperties readTextProperties(QXmlStreamReader& xml) const;
    const Style* find(const QString& family, const QString& name) const;

    QHash<QString, bool> m_fontIsMonospace;  // by font face name
    QHash<QString, Style> m_styles;           // by "family/name"
    QHash<QString, QList<bool>> m_listLevels;  // by list style name: numbered per level
};

}  // namespace wendrel::document::odt
