#pragma once

#include <QByteArray>
#include <QByteArrayView>
#include <QStringView>

#include <optional>

namespace wendrel::rtf {

// Writes RTF as plain ASCII in lines of reasonable length: control words get the delimiter
// they need, text is escaped, and characters beyond ASCII become \uN with a Windows-1252 or
// "?" fallback for readers that don't know \u. Lines break only where RTF ignores line ends.
class RtfOutput {
public:
    void word(QByteArrayView name, std::optional<int> parameter = std::nullopt);
    void open();
    void close();
    // Text of the document, escaped.
    void text(QStringView text);
    // One byte as \'hh, for the counted strings of list levels.
    void escapedByte(unsigned char byte);
    // Bytes as hexadecimal digits, broken into lines.
    void hex(const QByteArray& bytes);
    void newLine();

    QByteArray take() { return std::move(m_out); }

private:
    void append(QByteArrayView bytes);
    void character(char16_t unit);
    void breakLineIfLong();

    QByteArray m_out;
    qsizetype m_lineStart = 0;
    bool m_needsDelimiter = false;
};

}  // namespace wendrel::rtf
