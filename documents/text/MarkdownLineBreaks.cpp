#include "MarkdownLineBreaks.h"

#include <QRegularExpression>
#include <QStringList>

namespace wendrel::document {

namespace {

// A line that starts a block of its own (or ends a paragraph): a break before it is no break.
bool startsBlock(const QString& line)
{
    static const QRegularExpression blockStart(
        QStringLiteral("^\\s*($|#|>|[-+*=_]|[0-9]{1,9}[.)]|```|~~~|\\||<)"));
    return blockStart.match(line).hasMatch();
}

bool isHeadingOrTableRow(const QString& line)
{
    static const QRegularExpression pattern(QStringLiteral("^\\s{0,3}(#|\\|)"));
    return pattern.match(line).hasMatch();
}

// The fence a line opens or closes ("```" or "~~~" and longer), or empty.
QString fenceOf(const QString& line)
{
    static const QRegularExpression fence(QStringLiteral("^\\s{0,3}(`{3,}|~{3,})"));
    const QRegularExpressionMatch match = fence.match(line);
    return match.hasMatch() ? match.captured(1) : QString();
}

// How many characters of the line's end make a hard break: an odd run of backslashes ends in
// one that escapes the line end; two or more spaces do too. 0 when the line has none.
qsizetype breakMarkLength(const QString& line)
{
    qsizetype backslashes = 0;
    while (backslashes < line.size() && line[line.size() - 1 - backslashes] == u'\\')
        ++backslashes;
    if (backslashes % 2 == 1)
        return 1;
    qsizetype spaces = 0;
    while (spaces < line.size() && line[line.size() - 1 - spaces] == u' ')
        ++spaces;
    return spaces >= 2 && spaces < line.size() ? spaces : 0;
}

}  // namespace

QString markHardLineBreaks(const QString& markdown)
{
    QString normalised = markdown;
    normalised.replace(QStringLiteral("\r\n"), QStringLiteral("\n"));
    const QStringList lines = normalised.split(u'\n');
    QStringList out;
    QString openFence;
    for (qsizetype i = 0; i < lines.size(); ++i) {
        QString line = lines[i];
        const QString fence = fenceOf(line);
        if (!openFence.isEmpty()) {
            if (!fence.isEmpty() && fence.front() == openFence.front() && fence.size() >= openFence.size())
                openFence.clear();
            out.append(line);
            continue;
        }
        if (!fence.isEmpty()) {
            openFence = fence;
            out.append(line);
            continue;
        }
        // Join while this line (and the joined ones after it) end in a break before plain text.
        while (i + 1 < lines.size() && !isHeadingOrTableRow(line) && !startsBlock(lines[i + 1])) {
            const qsizetype mark = breakMarkLength(line);
            if (mark == 0 || line.trimmed().size() == mark)
                break;
            line.chop(mark);
            QString next = lines[i + 1];
            qsizetype indent = 0;
            while (indent < next.size() && next[indent].isSpace())
                ++indent;
            line += QChar(QChar::LineSeparator) + next.mid(indent);
            ++i;
        }
        out.append(line);
    }
    return out.join(u'\n');
}

}  // namespace wendrel::document
