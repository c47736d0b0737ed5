#include "TextMappingRepair.h"

#include <qpdf/QPDF.hh>
#include <qpdf/QPDFObjectHandle.hh>

#include <regex>

namespace wendrel {

namespace {

// The map's lines are "<from> <to> [<u> <u> …]" (bfrange with a list of targets), "<from>
// <to> <u>" (bfrange counting up) and "<glyph> <u>" (bfchar). A tab target becomes a space in
// lists and wherever it stands for a single glyph.
std::string repaired(const std::string& map)
{
    static const std::regex listed(R"(\[([^\]]*)\])");
    static const std::regex singleRange(R"((<([0-9A-Fa-f]+)> <\2> )<0009>)");
    static const std::regex singleChar(R"((^|\n)(<[0-9A-Fa-f]+> )<0009>(?=\s))");
    std::string result;
    auto last = map.cbegin();
    for (std::sregex_iterator list(map.cbegin(), map.cend(), listed), end; list != end; ++list) {
        result.append(last, (*list)[0].first);
        result += std::regex_replace((*list)[0].str(), std::regex("<0009>"), "<0020>");
        last = (*list)[0].second;
    }
    result.append(last, map.cend());
    result = std::regex_replace(result, singleRange, "$1<0020>");
    return std::regex_replace(result, singleChar, "$1$2<0020>");
}

}  // namespace

void mapTabGlyphsToSpaces(QPDF& pdf)
{
    for (QPDFObjectHandle object : pdf.getAllObjects()) {
        if (!object.isDictionary() || !object.getKey("/Type").isNameAndEquals("/Font"))
            continue;
        QPDFObjectHandle map = object.getKey("/ToUnicode");
        if (!map.isStream())
            continue;
        const std::shared_ptr<Buffer> data = map.getStreamData(qpdf_dl_generalized);
        const std::string text(reinterpret_cast<const char*>(data->getBuffer()), data->getSize());
        const std::string fixed = repaired(text);
        if (fixed != text)
            map.replaceStreamData(fixed, QPDFObjectHandle::newNull(), QPDFObjectHandle::newNull());
    }
}

}  // namespace wendrel
