#include "PngStructure.h"

#include <QIODevice>
#include <QtEndian>

namespace wendrel {

namespace {

constexpr char signature[] = "\x89PNG\r\n\x1a\n";
constexpr qint64 signatureLength = 8;
constexpr qint64 chunkHeaderLength = 8;  // length and type
constexpr qint64 crcLength = 4;
constexpr qint64 largestChunk = 0x7fffffff;  // the format's own limit

bool isPixelData(const QByteArray& type) { return type == "IDAT" || type == "fdAT"; }

}  // namespace

std::optional<QString> pngStructureProblem(QIODevice& file, qint64 largestSideChunk)
{
    if (!file.seek(0) || file.read(signatureLength) != QByteArray(signature, signatureLength))
        return std::nullopt;
    const qint64 fileSize = file.size();
    qint64 offset = signatureLength;
    while (offset < fileSize) {
        if (!file.seek(offset))
            return QStringLiteral("can't seek to %1").arg(offset);
        const QByteArray header = file.read(chunkHeaderLength);
        if (header.size() < chunkHeaderLength)
            return QStringLiteral("chunk header cut short at %1").arg(offset);
        const qint64 length = qFromBigEndian<quint32>(header.constData());
        const QByteArray type = header.mid(4);
        if (length > largestChunk)
            return QStringLiteral("%1 chunk claims %2 bytes").arg(QString::fromLatin1(type)).arg(length);
        if (offset + chunkHeaderLength + length + crcLength > fileSize)
            return QStringLiteral("%1 chunk claims %2 bytes past the end").arg(QString::fromLatin1(type)).arg(length);
        if (!isPixelData(type) && length > largestSideChunk)
            return QStringLiteral("%1 chunk of %2 bytes").arg(QString::fromLatin1(type)).arg(length);
        if (type == "IEND")
            return std::nullopt;
        offset += chunkHeaderLength + length + crcLength;
    }
    return std::nullopt;  // no end chunk: the decoder decides whether what is there suffices
}

}  // namespace wendrel
