#include "OoxmlText.h"

namespace wendrel {

namespace {

bool isHexDigit(QChar c)
{
    return (c >= u'0' && c <= u'9') || (c >= u'a' && c <= u'f') || (c >= u'A' && c <= u'F');
}

// "_x" + four hex digits + "_" at `at`.
bool isEscapeAt(QStringView text, qsizetype at)
{
    if (at + 7 > text.size() || text[at] != u'_' || text[at + 1] != u'x' || text[at + 6] != u'_')
        return false;
    for (qsizetype i = at + 2; i < at + 6; ++i) {
        if (!isHexDigit(text[i]))
            return false;
    }
    return true;
}

bool allowedInXml(char16_t c)
{
    return c == u'\t' || c == u'\n' || c == u'\r' || (c >= 0x20 && c != 0xFFFE && c != 0xFFFF);
}

void appendEscape(QByteArray& xml, char16_t c)
{
    xml += "_x" + QByteArray::number(c, 16).toUpper().rightJustified(4, '0') + '_';
}

}  // namespace

void appendOoxmlText(QByteArray& xml, QStringView text)
{
    qsizetype plainFrom = 0;
    const auto flushPlain = [&](qsizetype to) {
        if (to > plainFrom)
            xml += text.sliced(plainFrom, to - plainFrom).toUtf8();
    };
    for (qsizetype i = 0; i < text.size(); ++i) {
        const char16_t c = text[i].unicode();
        const char* entity = c == u'&' ? "&amp;" : c == u'<' ? "&lt;" : c == u'>' ? "&gt;" : nullptr;
        const bool escaped = !allowedInXml(c) || (c == u'_' && isEscapeAt(text, i));
        if (!entity && !escaped)
            continue;
        flushPlain(i);
        if (entity)
            xml += entity;
        else
            appendEscape(xml, c);
        plainFrom = i + 1;
    }
    flushPlain(text.size());
}

QString decodeOoxmlEscapes(const QString& text)
{
    if (!text.contains(u"_x"))
        return text;
    QString decoded;
    decoded.reserve(text.size());
    for (qsizetype i = 0; i < text.size(); ++i) {
        if (isEscapeAt(text, i)) {
            decoded += QChar(char16_t(QStringView(text).sliced(i + 2, 4).toUShort(nullptr, 16)));
            i += 6;
        } else {
            decoded += text[i];
        }
    }
    return decoded;
}

}  // namespace wendrel
