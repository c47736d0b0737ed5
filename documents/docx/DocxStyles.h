#pragma once

#include "DocxProperties.h"

#include <QByteArray>
#include <QHash>
#include <QString>

namespace wendrel::docx {

// What the reader needs of word/styles.xml: which paragraph styles are headings, which set
// numbering, and the run properties paragraph and character styles give, each through the
// chain of styles it is based on.
class StyleSheet {
public:
    StyleSheet() = default;
    // Throws OperationError when the part is not well-formed or declares a DTD.
    static StyleSheet parse(const QByteArray& xml);

    // The paragraph style for paragraphs that name none.
    QString defaultParagraphStyle() const { return m_defaultParagraphStyle; }

    // 1-6 for a heading style (by its outline level, or a name "heading N" or "Title"), else 0.
    int headingLevel(const QString& styleId) const;
    NumberingReference numbering(const QString& styleId) const;
    // The document defaults (unless left out), then the style chain from its root.
    RunProperties runProperties(const QString& styleId, bool withDefaults = true) const;

private:
    struct Style {
        QString id;
        QString basedOn;
        QString name;
        std::optional<int> outlineLevel;
        NumberingReference numbering;
        RunProperties run;
    };

    // The style and those it is based on, nearest first; a loop or a chain longer than any
    // real one ends the walk.
    QList<const Style*> chain(const QString& styleId) const;

    QHash<QString, Style> m_styles;
    QString m_defaultParagraphStyle;
    RunProperties m_defaults;
};

}  // namespace wendrel::docx
