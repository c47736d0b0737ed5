#include "RtfTokenizer.h"

#include <algorithm>

namespace wendrel::rtf {

namespace {

bool isLetter(char c)
{
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
}

bool isDigit(char c)
{
    return c >= '0' && c <= '9';
}


// Control word names are at most 32 letters and parameters fit in a signed 16- or 32-bit
// number; anything longer is read in full but clamped, so a hostile run of digits is harmless.
constexpr qsizetype maximumWordLength = 32;
constexpr qint64 parameterLimit = 2'000'000'000;

}  // namespace

int hexDigitValue(char c)
{
    if (c >= '0' && c <= '9')
        return c - '0';
    if (c >= 'a' && c <= 'f')
        return c - 'a' + 10;
    if (c >= 'A' && c <= 'F')
        return c - 'A' + 10;
    return -1;
}

Token Tokenizer::next()
{
    while (m_position < m_source.size()) {
        const char c = m_source[m_position];
        switch (c) {
        case '{':
            ++m_position;
            return {.kind = Token::Kind::GroupStart};
        case '}':
            ++m_position;
            return {.kind = Token::Kind::GroupEnd};
        case '\\':
            ++m_position;
            return controlAfterBackslash();
        case '\r':
        case '\n':
            ++m_position;
            continue;
        default: {
            const qsizetype start = m_position;
            while (m_position < m_source.size()) {
                const char t = m_source[m_position];
                if (t == '{' || t == '}' || t == '\\' || t == '\r' || t == '\n')
                    break;
                ++m_position;
            }
            return {.kind = Token::Kind::Text, .word = m_source.sliced(start, m_position - start)};
        }
        }
    }
    return {};
}

Token Tokenizer::controlAfterBackslash()
{
    if (m_position >= m_source.size())
        return {};
    const char first = m_source[m_position];
    if (!isLetter(first)) {
        ++m_position;
        switch (first) {
        case '\\':
        case '{':
        case '}':
            return {.kind = Token::Kind::Text, .word = m_source.sliced(m_position - 1, 1)};
        case '\'': {
            // Two hex digits; a broken escape yields what digits there are, or nothing.
            int value = 0;
            int digits = 0;
            while (digits < 2 && m_position < m_source.size() && hexDigitValue(m_source[m_position]) >= 0) {
                value = value * 16 + hexDigitValue(m_source[m_position]);
                ++m_position;
                ++digits;
            }
            if (digits == 0)
                return next();
            return {.kind = Token::Kind::HexByte, .byte = static_cast<unsigned char>(value)};
        }
        case '\r':
        case '\n':
            // A backslash before a line end is a paragraph mark.
            return {.kind = Token::Kind::ControlWord, .word = "par"};
        default:
            return {.kind = Token::Kind::ControlWord, .word = m_source.sliced(m_position - 1, 1)};
        }
    }

    const qsizetype start = m_position;
    while (m_position < m_source.size() && isLetter(m_source[m_position]))
        ++m_position;
    Token token{.kind = Token::Kind::ControlWord,
                .word = m_source.sliced(start, std::min(m_position - start, maximumWordLength))};

    bool negative = false;
    if (m_position + 1 < m_source.size() && m_source[m_position] == '-' && isDigit(m_source[m_position + 1])) {
        negative = true;
        ++m_position;
    }
    if (m_position < m_source.size() && isDigit(m_source[m_position])) {
        qint64 value = 0;
        while (m_position < m_source.size() && isDigit(m_source[m_position])) {
            value = std::min(parameterLimit, value * 10 + (m_source[m_position] - '0'));
            ++m_position;
        }
        token.hasParameter = true;
        token.parameter = static_cast<int>(negative ? -value : value);
    }
    if (m_position < m_source.size() && m_source[m_position] == ' ')
        ++m_position;  // the delimiter belongs to the word
    return token;
}

QByteArrayView Tokenizer::takeBinary(qint64 count)
{
    const qsizetype available = m_source.size() - m_position;
    const qsizetype taken = static_cast<qsizetype>(std::clamp<qint64>(count, 0, available));
    const QByteArrayView bytes = m_source.sliced(m_position, taken);
    m_position += taken;
    return bytes;
}

}  // namespace wendrel::rtf
