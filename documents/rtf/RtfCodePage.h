#pragma once

#include <QByteArray>
#include <QHash>
#include <QString>
#include <QStringDecoder>

#include <memory>

namespace wendrel::rtf {

// The code page a font's \fcharsetN stands for; 0 when the charset names none (symbol fonts,
// the default charset), so the document's own code page applies.
int codePageOfCharset(int charset);

// Turns bytes in a Windows code page into text: through Qt's converters where Qt knows the code
// page, through Windows-1252 otherwise (the code page RTF assumes when it names none).
class CodePageDecoder {
public:
    QString decode(int codePage, const QByteArray& bytes);

private:
    QStringDecoder* decoderFor(int codePage);

    QHash<int, std::shared_ptr<QStringDecoder>> m_decoders;  // null: Qt doesn't know it
};

// Windows-1252 alone, with the bytes it leaves undefined kept as the same-numbered C1 code.
QString decodeWindows1252(const QByteArray& bytes);

// The Windows-1252 byte for `character`, or 0 when it has none.
unsigned char windows1252Byte(char16_t character);

}  // namespace wendrel::rtf
