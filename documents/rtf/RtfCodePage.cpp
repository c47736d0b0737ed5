#include "RtfCodePage.h"

#include <QList>

namespace wendrel::rtf {

namespace {

// Windows-1252 bytes 0x80-0x9F; the rest match Latin-1.
constexpr char16_t windows1252High[32] = {
    0x20AC, 0x0081, 0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021, 0x02C6, 0x2030, 0x0160,
    0x2039, 0x0152, 0x008D, 0x017D, 0x008F, 0x0090, 0x2018, 0x2019, 0x201C, 0x201D, 0x2022,
    0x2013, 0x2014, 0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0x009D, 0x017E, 0x0178,
};

// Names Qt's converters know a Windows code page by, most likely first.
QList<QByteArray> encodingNames(int codePage)
{
    switch (codePage) {
    case 932:
        return {"Shift_JIS"};
    case 936:
        return {"GBK"};
    case 949:
        return {"windows-949", "EUC-KR"};
    case 950:
        return {"Big5"};
    case 10000:
        return {"macintosh"};
    case 65001:
        return {"UTF-8"};
    default:
        return {"windows-" + QByteArray::number(codePage), "cp" + QByteArray::number(codePage),
                "IBM" + QByteArray::number(codePage)};
    }
}

}  // namespace

int codePageOfCharset(int charset)
{
    switch (charset) {
    case 0:
        return 1252;
    case 77:
        return 10000;
    case 128:
        return 932;
    case 129:
        return 949;
    case 134:
        return 936;
    case 136:
        return 950;
    case 161:
        return 1253;
    case 162:
        return 1254;
    case 163:
        return 1258;
    case 177:
        return 1255;
    case 178:
        return 1256;
    case 186:
        return 1257;
    case 204:
        return 1251;
    case 222:
        return 874;
    case 238:
        return 1250;
    default:
        return 0;
    }
}

QString decodeWindows1252(const QByteArray& bytes)
{
    QString text;
    text.reserve(bytes.size());
    for (const char c : bytes) {
        const auto byte = static_cast<unsigned char>(c);
        text.append(QChar(byte >= 0x80 && byte < 0xA0 ? windows1252High[byte - 0x80] : char16_t(byte)));
    }
    return text;
}

unsigned char windows1252Byte(char16_t character)
{
    if (character < 0x80 || (character >= 0xA0 && character <= 0xFF))
        return static_cast<unsigned char>(character);
    for (int index = 0; index < 32; ++index) {
        if (windows1252High[index] == character && character > 0xFF)
            return static_cast<unsigned char>(0x80 + index);
    }
    return 0;
}

QStringDecoder* CodePageDecoder::decoderFor(int codePage)
{
    auto found = m_decoders.constFind(codePage);
    if (found == m_decoders.constEnd()) {
        std::shared_ptr<QStringDecoder> decoder;
        if (codePage > 0 && codePage != 1252) {
            for (const QByteArray& name : encodingNames(codePage)) {
                auto candidate = std::make_shared<QStringDecoder>(name.constData());
                if (candidate->isValid()) {
                    decoder = candidate;
                    break;
                }
            }
        }
        found = m_decoders.insert(codePage, decoder);
    }
    return found->get();
}

QString CodePageDecoder::decode(int codePage, const QByteArray& bytes)
{
    QStringDecoder* decoder = decoderFor(codePage);
    if (!decoder)
        return decodeWindows1252(bytes);
    decoder->resetState();
    return decoder->decode(bytes);
}

}  // namespace wendrel::rtf
