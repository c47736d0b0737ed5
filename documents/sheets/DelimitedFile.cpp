#include "DelimitedFile.h"

#include "CellTyping.h"
#include "DelimitedText.h"
#include "SheetErrors.h"
#include "SheetLimits.h"

#include <QCoreApplication>
#include <QFile>
#include <QStringDecoder>

#include <algorithm>

namespace wendrel {

namespace {

constexpr qint64 pieceBytes = 1 << 20;
// Enough of the start to hold the lines the delimiter is guessed from.
constexpr qsizetype detectionChars = 64 * 1024;
constexpr qsizetype sliceChars = 16 * 1024;

QStringDecoder::Encoding encodingFromMark(const QByteArray& start)
{
    if (start.startsWith("\xFF\xFE"))
        return QStringDecoder::Utf16LE;
    if (start.startsWith("\xFE\xFF"))
        return QStringDecoder::Utf16BE;
    return QStringDecoder::Utf8;  // its mark, if any, the decoder drops
}

// True when text of `totalBytes` bytes, the last of them `bytes`, ends inside a character: the
// decoder waits for the rest and never says.
bool endsInsideCharacter(const QByteArray& bytes, qint64 totalBytes, QStringDecoder::Encoding encoding)
{
    if (encoding != QStringDecoder::Utf8)
        return totalBytes % 2 != 0;
    for (qsizetype back = 1; back <= 3 && back <= bytes.size(); ++back) {
        const auto byte = static_cast<unsigned char>(bytes[bytes.size() - back]);
        if ((byte & 0xC0) == 0x80)
            continue;  // a continuation byte: look further back for its lead
        const int length = byte >= 0xF0 ? 4 : byte >= 0xE0 ? 3 : byte >= 0xC0 ? 2 : 1;
        return length > back;
    }
    return false;
}

}  // namespace

void readDelimitedFile(const QString& path, const DelimitedReadOptions& options, const SheetRowSink& sink,
                       const SheetProgress& progress)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        throw OperationError::withReason(QCoreApplication::translate("SheetOperations", "Couldn't read the table"),
                                         file.errorString());
    }
    const qint64 size = file.size();

    SheetRow row;
    int rowsInBatch = 0;
    qint64 bytesRead = 0;
    double fraction = 0;  // of the file read, as far as the parser has got
    const auto handOn = [&](const QStringList& fields) {
        row.resize(fields.size());
        for (qsizetype i = 0; i < fields.size(); ++i)
            row[i] = options.typeValues ? typedCell(fields[i]) : SheetCell::ofText(fields[i]);
        sink(row);
        if (++rowsInBatch == sheet::rowsPerBatch) {
            rowsInBatch = 0;
            if (progress)
                progress(fraction);
        }
    };

    std::optional<DelimitedParser> parser;
    if (options.delimiter)
        parser.emplace(*options.delimiter, handOn);
    QString head;  // text held back until the delimiter is known

    std::optional<QStringDecoder> decoder;
    QByteArray piece;
    QByteArray tail;  // the last bytes read
    QStringDecoder::Encoding encoding = QStringDecoder::Utf8;
    for (;;) {
        piece = file.read(pieceBytes);
        if (file.error() != QFileDevice::NoError) {
            throw OperationError::withReason(
                QCoreApplication::translate("SheetOperations", "Couldn't read the table"), file.errorString());
        }
        const bool atEnd = piece.size() < pieceBytes;
        if (!decoder) {
            encoding = encodingFromMark(piece);
            decoder.emplace(encoding);
        }
        const qint64 pieceStart = bytesRead;
        bytesRead += piece.size();
        if (!piece.isEmpty())
            tail = piece.right(4);
        const QString text = decoder->decode(piece);
        if (decoder->hasError() || (atEnd && endsInsideCharacter(tail, bytesRead, encoding)))
            throw sheet::notUtf8Table();

        // In slices, so progress moves within a piece too.
        const auto feed = [&](QStringView all) {
            for (qsizetype at = 0; at < all.size(); at += sliceChars) {
                const qsizetype end = std::min(all.size(), at + sliceChars);
                fraction = size > 0 ? (double(pieceStart) + double(piece.size()) * double(end) / double(all.size())) / double(size)
                                    : 0;
                parser->feed(all.sliced(at, end - at));
            }
        };
        if (parser) {
            feed(text);
        } else {
            head += text;
            if (head.size() >= detectionChars || atEnd) {
                parser.emplace(detectDelimiter(head), handOn);
                feed(head);
                head.clear();
            }
        }
        if (atEnd)
            break;
    }
    parser->finish();
    if (progress)
        progress(1);
}

}  // namespace wendrel
