#include "RtfOutput.h"

#include "RtfCodePage.h"

namespace wendrel::rtf {

namespace {

constexpr qsizetype comfortableLineLength = 100;
constexpr qsizetype hexLineLength = 128;

}  // namespace

void RtfOutput::append(QByteArrayView bytes)
{
    m_out.append(bytes.data(), bytes.size());
}

void RtfOutput::newLine()
{
    m_out.append("\r\n");
    m_lineStart = m_out.size();
    // A line end ends a control word by itself; a space after it would be text.
    m_needsDelimiter = false;
}

void RtfOutput::breakLineIfLong()
{
    if (m_out.size() - m_lineStart >= comfortableLineLength)
        newLine();
}

void RtfOutput::word(QByteArrayView name, std::optional<int> parameter)
{
    breakLineIfLong();
    m_out.append('\\');
    append(name);
    if (parameter)
        m_out.append(QByteArray::number(*parameter));
    m_needsDelimiter = true;
}

void RtfOutput::open()
{
    breakLineIfLong();
    m_out.append('{');
    m_needsDelimiter = false;
}

void RtfOutput::close()
{
    m_out.append('}');
    m_needsDelimiter = false;
}

void RtfOutput::text(QStringView text)
{
    for (const QChar c : text)
        character(c.unicode());
}

void RtfOutput::character(char16_t unit)
{
    switch (unit) {
    case u'\t':
        word("tab");
        return;
    case QChar::LineSeparator:
    case QChar::ParagraphSeparator:
    case u'\n':
        word("line");
        return;
    case QChar::Nbsp:
        word("~");
        m_needsDelimiter = false;
        return;
    default:
        break;
    }
    if (unit < 0x20)
        return;  // other control characters have no place in text
    if (unit < 0x7F) {
        if (m_needsDelimiter) {
            m_out.append(' ');
            m_needsDelimiter = false;
        } else if (m_out.size() - m_lineStart >= 2 * comfortableLineLength) {
            newLine();  // a long run without spaces; readers ignore line ends in text
        }
        if (unit == u'\\' || unit == u'{' || unit == u'}')
            m_out.append('\\');
        m_out.append(static_cast<char>(unit));
        // Text lines break after a space, where a reader sees only the space.
        if (unit == u' ' && m_out.size() - m_lineStart >= comfortableLineLength)
            newLine();
        return;
    }
    // \u takes a signed 16-bit number; characters beyond U+FFFF come as their two surrogates.
    word("u", static_cast<int>(static_cast<int16_t>(unit)));
    const unsigned char fallback = windows1252Byte(unit);
    if (fallback >= 0x80) {
        escapedByte(fallback);
    } else {
        // With its delimiter: some readers take a "?" right after the number as part of it.
        m_out.append(" ?");
        m_needsDelimiter = false;
    }
}

void RtfOutput::escapedByte(unsigned char byte)
{
    static constexpr char digits[] = "0123456789abcdef";
    const char escape[4] = {'\\', '\'', digits[byte >> 4], digits[byte & 0xF]};
    append(QByteArrayView(escape, 4));
    m_needsDelimiter = false;
}

void RtfOutput::hex(const QByteArray& bytes)
{
    const QByteArray digits = bytes.toHex();
    for (qsizetype start = 0; start < digits.size(); start += hexLineLength) {
        newLine();
        append(QByteArrayView(digits).sliced(start, std::min(hexLineLength, digits.size() - start)));
    }
    m_needsDelimiter = false;
}

}  // namespace wendrel::rtf
