#pragma once

#include <QByteArray>
#include <QByteArrayView>

namespace wendrel::rtf {

// One piece of RTF source. Text is a run of plain bytes (still in the document's code page);
// a hex escape is one byte given as \'hh; control symbols other than the escaped \ { } come as
// a control word of one non-letter character.
// The value of a hexadecimal digit, or -1 for any other character.
int hexDigitValue(char c);

struct Token {
    enum class Kind { End, GroupStart, GroupEnd, ControlWord, Text, HexByte };
    Kind kind = Kind::End;
    QByteArrayView word;  // the control word's name, or the text's bytes
    bool hasParameter = false;
    int parameter = 0;
    unsigned char byte = 0;  // for HexByte
};

// Splits RTF bytes into tokens, one at a time and without recursion, so depth costs nothing
// here. Line ends outside control words mean nothing in RTF and are dropped.
class Tokenizer {
public:
    explicit Tokenizer(QByteArrayView source) : m_source(source) {}

    Token next();

    // The raw bytes that follow a \binN word: at most what is left of the source, so a huge N
    // can't ask for more memory than the file already takes.
    QByteArrayView takeBinary(qint64 count);

private:
    Token controlAfterBackslash();

    QByteArrayView m_source;
    qsizetype m_position = 0;
};

}  // namespace wendrel::rtf
