#include "DocxNumbering.h"

#include "DocxStyles.h"
#include "DocxXml.h"

namespace wendrel::docx {

namespace {

bool isOrderedFormat(const QString& format)
{
    // "bullet" shows a symbol and "none" nothing; every other format counts.
    return format != u"bullet" && format != u"none" && !format.isEmpty();
}

std::optional<int> numberAttribute(const PartReader& reader, QStringView name)
{
    const std::optional<qint64> value = wholeNumber(reader.attribute(name));
    if (!value || *value < 0 || *value > 1'000'000'000)
        return std::nullopt;
    return static_cast<int>(*value);
}

// Reads a w:lvl through its end: its level number and whether it counts.
std::pair<int, bool> readLevel(PartReader& reader)
{
    const int level = numberAttribute(reader, u"ilvl").value_or(0);
    bool ordered = false;
    const int depth = reader.depth();
    while (reader.next() && reader.depth() >= depth) {
        if (reader.isStart() && reader.is(Namespace::word, u"numFmt") && reader.depth() == depth + 1)
            ordered = isOrderedFormat(reader.attribute(u"val").value_or(QString()));
    }
    return {level, ordered};
}

}  // namespace

Numbering Numbering::parse(const QByteArray& xml, const StyleSheet& styles)
{
    Numbering numbering;
    PartReader reader(xml, QStringLiteral("word/numbering.xml"));
    while (reader.next()) {
        if (!reader.isStart() || reader.elementNamespace() != Namespace::word)
            continue;
        if (reader.name() == u"abstractNum") {
            const int id = numberAttribute(reader, u"abstractNumId").value_or(-1);
            Levels levels;
            const int depth = reader.depth();
            while (reader.next() && reader.depth() >= depth) {
                if (!reader.isStart() || reader.depth() != depth + 1)
                    continue;
                if (reader.is(Namespace::word, u"lvl")) {
                    const auto [level, ordered] = readLevel(reader);
                    levels.ordered.insert(level, ordered);
                    continue;
                }
                if (reader.is(Namespace::word, u"numStyleLink"))
                    levels.styleLink = reader.attribute(u"val").value_or(QString());
                reader.skipElement();
            }
            numbering.m_abstracts.insert(id, levels);
        } else if (reader.name() == u"num") {
            const std::optional<int> id = numberAttribute(reader, u"numId");
            Instance instance;
            const int depth = reader.depth();
            while (reader.next() && reader.depth() >= depth) {
                if (!reader.isStart())
                    continue;
                if (reader.is(Namespace::word, u"abstractNumId"))
                    instance.abstractId = numberAttribute(reader, u"val").value_or(-1);
                else if (reader.is(Namespace::word, u"lvl")) {
                    const auto [level, ordered] = readLevel(reader);
                    instance.overrides.insert(level, ordered);
                }
            }
            if (id && *id != 0)
                numbering.m_instances.insert(*id, instance);
        }
    }
    // A numbering that links to a numbering style takes the levels of the numbering that
    // style names.
    for (auto it = numbering.m_instances.cbegin(); it != numbering.m_instances.cend(); ++it) {
        const Levels levels = numbering.m_abstracts.value(it->abstractId);
        if (levels.styleLink.isEmpty())
            continue;
        const std::optional<int> linked = styles.numbering(levels.styleLink).numberingId;
        if (linked && *linked != it.key() && numbering.m_instances.contains(*linked))
            numbering.m_linkedInstances.insert(it.key(), *linked);
    }
    return numbering;
}

bool Numbering::isOrdered(int numberingId, int level) const
{
    const auto instance = m_instances.constFind(numberingId);
    if (instance == m_instances.cend())
        return false;
    if (const auto overridden = instance->overrides.constFind(level); overridden != instance->overrides.cend())
        return overridden.value();
    int abstractId = instance->abstractId;
    if (const auto linked = m_linkedInstances.constFind(numberingId); linked != m_linkedInstances.cend())
        abstractId = m_instances.value(linked.value()).abstractId;
    return m_abstracts.value(abstractId).ordered.value(level, false);
}

}  // namespace wendrel::docx
