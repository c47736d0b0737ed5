#pragma once

#include <QByteArray>
#include <QHash>
#include <QList>
#include <QString>

namespace wendrel::docx {

class StyleSheet;

// What the reader needs of word/numbering.xml: whether a numbering's level counts (decimal,
// letters, roman numerals...) or shows a bullet.
class Numbering {
public:
    Numbering() = default;
    // Throws OperationError when the part is not well-formed or declares a DTD. Numbering that
    // borrows its levels from a numbering style is followed through `styles`.
    static Numbering parse(const QByteArray& xml, const StyleSheet& styles);

    // Whether `numberingId` is a list at all (0 and unknown ids are not).
    bool isList(int numberingId) const { return m_instances.contains(numberingId); }
    bool isOrdered(int numberingId, int level) const;

private:
    struct Levels {
        QHash<int, bool> ordered;  // by level
        QString styleLink;         // w:numStyleLink: the levels are another numbering's
    };
    struct Instance {
        int abstractId = -1;
        QHash<int, bool> overrides;  // levels this instance redefines
    };

    QHash<int, Levels> m_abstracts;
    QHash<int, Instance> m_instances;
    QHash<int, int> m_linkedInstances;  // instance id → the instance its style link leads to
};

}  // namespace wendrel::docx
