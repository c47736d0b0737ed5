#include "SubtitleParser.h"

#include <QString>

namespace wendrel::SubtitleOperations {

namespace {

// Digits with at most one decimal point and at least one digit. Signs, exponents, "inf" and
// "nan" are refused, so nonsense never becomes a time.
std::optional<double> parseDecimal(QStringView piece)
{
    bool seenDigit = false;
    bool seenPoint = false;
    for (QChar character : piece) {
        if (character >= u'0' && character <= u'9')
            seenDigit = true;
        else if (character == u'.' && !seenPoint)
            seenPoint = true;
        else
            return std::nullopt;
    }
    if (!seenDigit)
        return std::nullopt;
    bool ok = false;
    const double value = piece.toDouble(&ok);
    return ok ? std::optional<double>(value) : std::nullopt;
}

}  // namespace

std::optional<double> parseSubtitleTime(QStringView text)
{
    QString normalized = text.trimmed().toString();
    normalized.replace(u',', u'.');
    const QStringList pieces = normalized.split(u':', Qt::SkipEmptyParts);
    if (pieces.size() != 2 && pieces.size() != 3)
        return std::nullopt;
    double seconds = 0;
    for (const QString& piece : pieces) {
        const std::optional<double> value = parseDecimal(piece);
        if (!value)
            return std::nullopt;
        seconds = seconds * 60 + *value;
    }
    return seconds;
}

QList<Cue> parseSubtitles(QStringView input)
{
    QString text = input.toString();
    text.replace(QStringLiteral("\r\n"), QStringLiteral("\n"));
    text.remove(QChar(0xFEFF));

    QList<Cue> cues;
    for (QStringView block : QStringView(text).split(QStringLiteral("\n\n"))) {
        const QList<QStringView> lines = block.split(u'\n');
        qsizetype arrowLine = -1;
        for (qsizetype index = 0; index < lines.size(); ++index) {
            if (lines[index].contains(QStringLiteral("-->"))) {
                arrowLine = index;
                break;
            }
        }
        if (arrowLine < 0)
            continue;

        const QList<QStringView> times = lines[arrowLine].split(QStringLiteral("-->"));
        if (times.size() != 2)
            continue;
        const std::optional<double> start = parseSubtitleTime(times[0]);
        if (!start)
            continue;
        // Cue settings may follow the end time: keep only its first word.
        const QStringView endText = times[1].trimmed();
        qsizetype wordEnd = 0;
        while (wordEnd < endText.size() && !endText[wordEnd].isSpace())
            ++wordEnd;
        const std::optional<double> end = parseSubtitleTime(endText.left(wordEnd));
        if (!end)
            continue;

        QStringList textLines;
        for (qsizetype index = arrowLine + 1; index < lines.size(); ++index)
            textLines.append(lines[index].toString());
        cues.append({*start, *end, textLines.join(u'\n').trimmed()});
    }
    return cues;
}

}  // namespace wendrel::SubtitleOperations
