#include "SubtitleWriter.h"

#include "operations/OperationError.h"

#include <QCoreApplication>
#include <QStringList>

#include <cmath>

namespace wendrel::SubtitleOperations {

namespace {

// Below 2^63 milliseconds with room to spare, so the count is exact in a qint64.
constexpr double largestMilliseconds = 9.0e18;

QString timeLine(const Cue& cue, QChar separator)
{
    return formatSubtitleTime(cue.start, separator) + QStringLiteral(" --> ")
           + formatSubtitleTime(cue.end, separator) + u'\n';
}

}  // namespace

QString formatSubtitleTime(double seconds, QChar separator)
{
    const double milliseconds = std::round(seconds * 1000);  // halves away from zero
    if (!(milliseconds >= 0 && milliseconds < largestMilliseconds)) {
        throw OperationError(QCoreApplication::translate(
            "SubtitleOperations", "A subtitle time is too large to write"));
    }
    const auto total = static_cast<qint64>(milliseconds);
    return QStringLiteral("%1:%2:%3%4%5")
        .arg(total / 3'600'000, 2, 10, QLatin1Char('0'))
        .arg(total / 60'000 % 60, 2, 10, QLatin1Char('0'))
        .arg(total / 1000 % 60, 2, 10, QLatin1Char('0'))
        .arg(separator)
        .arg(total % 1000, 3, 10, QLatin1Char('0'));
}

QString writeSubtitles(const QList<Cue>& cues, SubtitleFormat format)
{
    QString output;
    switch (format) {
    case SubtitleFormat::srt:
        for (qsizetype index = 0; index < cues.size(); ++index) {
            output += QString::number(index + 1) + u'\n' + timeLine(cues[index], u',')
                      + cues[index].text + QStringLiteral("\n\n");
        }
        break;
    case SubtitleFormat::vtt:
        output = QStringLiteral("WEBVTT\n\n");
        for (const Cue& cue : cues)
            output += timeLine(cue, u'.') + cue.text + QStringLiteral("\n\n");
        break;
    case SubtitleFormat::txt: {
        QStringList texts;
        for (const Cue& cue : cues)
            texts.append(cue.text);
        output = texts.join(u'\n') + u'\n';
        break;
    }
    }
    return output;
}

}  // namespace wendrel::SubtitleOperations
