#include "DocxProperties.h"

#include "DocxXml.h"

namespace wendrel::docx {

namespace {

template <typename T>
void take(std::optional<T>& into, const std::optional<T>& from)
{
    if (from)
        into = from;
}

std::optional<int> smallNumber(const std::optional<QString>& value)
{
    const std::optional<qint64> number = wholeNumber(value);
    if (!number || *number < 0 || *number > 1'000'000'000)
        return std::nullopt;
    return static_cast<int>(*number);
}

}  // namespace

void RunProperties::overlay(const RunProperties& over)
{
    take(bold, over.bold);
    take(italic, over.italic);
    take(underline, over.underline);
    take(strike, over.strike);
    take(code, over.code);
    take(hidden, over.hidden);
    if (!over.style.isEmpty())
        style = over.style;
}

document::InlineStyle RunProperties::inlineStyle() const
{
    return {
        .bold = bold.value_or(false),
        .italic = italic.value_or(false),
        .underline = underline.value_or(false),
        .strike = strike.value_or(false),
        .code = code.value_or(false),
    };
}

bool isMonospaceFont(const QString& family)
{
    const QString name = family.trimmed().toLower();
    if (name.isEmpty())
        return false;
    static const QStringView fragments[] = {u"mono", u"courier", u"consolas", u"console", u"typewriter",
                                            u"code",  u"menlo",   u"monaco",   u"inconsolata"};
    for (QStringView fragment : fragments) {
        if (name.contains(fragment))
            return true;
    }
    return name == u"hack" || name == u"fixedsys" || name == u"terminal";
}

RunProperties readRunProperties(PartReader& reader)
{
    RunProperties properties;
    const int depth = reader.depth();
    while (reader.next() && reader.depth() >= depth) {
        if (!reader.isStart())
            continue;
        if (reader.elementNamespace() != Namespace::word || reader.depth() != depth + 1) {
            reader.skipElement();
            continue;
        }
        const QStringView name = reader.name();
        if (name == u"b")
            properties.bold = reader.toggleValue();
        else if (name == u"i")
            properties.italic = reader.toggleValue();
        else if (name == u"u")
            properties.underline = reader.toggleValue();
        else if (name == u"strike" || name == u"dstrike") {
            // Either kind of strike-out counts; one turned off doesn't undo the other.
            const bool on = reader.toggleValue();
            properties.strike = on || properties.strike.value_or(false);
        } else if (name == u"vanish")
            properties.hidden = reader.toggleValue();
        else if (name == u"rStyle")
            properties.style = reader.attribute(u"val").value_or(QString());
        else if (name == u"rFonts") {
            const std::optional<QString> font = reader.attribute(u"ascii") ? reader.attribute(u"ascii")
                                                                           : reader.attribute(u"hAnsi");
            if (font)
                properties.code = isMonospaceFont(*font);
        }
        reader.skipElement();
    }
    return properties;
}

ParagraphProperties readParagraphProperties(PartReader& reader)
{
    ParagraphProperties properties;
    const int depth = reader.depth();
    while (reader.next() && reader.depth() >= depth) {
        if (!reader.isStart())
            continue;
        if (reader.elementNamespace() == Namespace::word && reader.depth() == depth + 1) {
            const QStringView name = reader.name();
            if (name == u"pStyle") {
                properties.style = reader.attribute(u"val").value_or(QString());
            } else if (name == u"outlineLvl") {
                properties.outlineLevel = smallNumber(reader.attribute(u"val"));
            } else if (name == u"numPr") {
                const int numPrDepth = reader.depth();
                while (reader.next() && reader.depth() >= numPrDepth) {
                    if (!reader.isStart())
                        continue;
                    if (reader.name() == u"numId")
                        properties.numbering.numberingId = smallNumber(reader.attribute(u"val"));
                    else if (reader.name() == u"ilvl")
                        properties.numbering.level = smallNumber(reader.attribute(u"val"));
                    reader.skipElement();
                }
                continue;  // the loop above ended on numPr's end
            }
        }
        reader.skipElement();
    }
    return properties;
}

}  // namespace wendrel::docx
