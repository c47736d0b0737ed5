#include "MarkdownInline.h"

#include "documents/model/DocumentWalk.h"

#include <QRegularExpression>
#include <QStringList>

namespace wendrel::document {

namespace {

QString escapeText(QStringView text, MarkdownPlace place)
{
    QString out;
    out.reserve(text.size() + 8);
    for (qsizetype i = 0; i < text.size(); ++i) {
        const QChar c = text[i];
        switch (c.unicode()) {
        case u'\\': case u'`': case u'*': case u'_': case u'[': case u']': case u'<': case u'>': case u'~':
            out += u'\\';
            break;
        case u'|':
            if (place == MarkdownPlace::tableCell)
                out += u'\\';
            break;
        case u'#':
            if (place == MarkdownPlace::heading)
                out += u'\\';  // trailing hashes would close the heading
            break;
        case u'&':
            // Only where it could start an entity ("&amp;", "&#38;").
            if (i + 1 < text.size() && (text[i + 1].isLetter() || text[i + 1] == u'#'))
                out += u'\\';
            break;
        default:
            break;
        }
        out += c;
    }
    return out;
}

QString codeSpan(QString text, MarkdownPlace place)
{
    qsizetype longest = 0;
    qsizetype current = 0;
    for (QChar c : std::as_const(text)) {
        current = c == u'`' ? current + 1 : 0;
        longest = std::max(longest, current);
    }
    if (place == MarkdownPlace::tableCell)
        text.replace(u'|', QStringLiteral("\\|"));  // a table splits cells even inside code
    const QString fence(longest + 1, u'`');
    const bool pad = text.startsWith(u'`') || text.endsWith(u'`');
    return pad ? fence + u' ' + text + u' ' + fence : fence + text + fence;
}

// One piece of a run, without line breaks: markers hug the text, and the spaces around it stay
// outside them, since "** bold**" is no emphasis.
QString styledPiece(const QString& text, const InlineStyle& style, MarkdownPlace place)
{
    qsizetype start = 0;
    while (start < text.size() && text[start].isSpace())
        ++start;
    qsizetype end = text.size();
    while (end > start && text[end - 1].isSpace())
        --end;
    if (start == end)
        return text;
    QString core = text.mid(start, end - start);
    core = style.code ? codeSpan(core, place) : escapeText(core, place);
    if (style.strike)
        core = QStringLiteral("~~") + core + QStringLiteral("~~");
    if (style.italic)
        core = u'*' + core + u'*';
    if (style.bold)
        core = QStringLiteral("**") + core + QStringLiteral("**");
    return text.left(start) + core + text.mid(end);
}

QString lineBreak(MarkdownPlace place)
{
    switch (place) {
    case MarkdownPlace::paragraph:
        return QStringLiteral("\\\n");
    case MarkdownPlace::heading:
        return QStringLiteral(" ");
    case MarkdownPlace::tableCell:
        return QStringLiteral("<br>");
    }
    return QStringLiteral(" ");
}

QString styledRun(const Run& run, MarkdownPlace place)
{
    InlineStyle style = run.style;
    if (place == MarkdownPlace::heading)
        style.bold = false;  // a heading is bold by its nature
    QStringList pieces;
    for (const QString& piece : run.text.split(QChar::LineSeparator))
        pieces.append(styledPiece(piece, style, place));
    return pieces.join(lineBreak(place));
}

// Text at the start of a line that would begin a heading, list, quote, rule or code block.
QString escapeLineStart(QString line)
{
    qsizetype leading = 0;
    while (leading < line.size() && (line[leading] == u' ' || line[leading] == u'\t'))
        ++leading;
    line.remove(0, leading);
    while (line.endsWith(u' ') || line.endsWith(u'\t'))
        line.chop(1);  // two trailing spaces would be a line break
    if (line.isEmpty())
        return line;
    const QChar first = line.front();
    if (first == u'#' || first == u'+' || first == u'-' || first == u'=') {
        line.prepend(u'\\');
        return line;
    }
    static const QRegularExpression orderedMarker(QStringLiteral("^([0-9]{1,9})([.)])"));
    const QRegularExpressionMatch match = orderedMarker.match(line);
    if (match.hasMatch())
        line.insert(match.capturedLength(1), u'\\');
    return line;
}

}  // namespace

QString markdownLinkTarget(const QString& target)
{
    QString out;
    for (QChar c : target) {
        if (c.isSpace() || c == u'(' || c == u')' || c == u'<' || c == u'>' || c == u'\\')
            out += QStringLiteral("%%1").arg(c.unicode(), 2, 16, QLatin1Char('0')).toUpper();
        else
            out += c;
    }
    return out;
}

QString blockMarkdown(const QTextBlock& block, MarkdownPlace place)
{
    QString text;
    const QList<Run> all = runs(block);
    for (qsizetype i = 0; i < all.size();) {
        const QString link = all[i].style.link;
        QString group;
        qsizetype next = i;
        for (; next < all.size() && all[next].style.link == link; ++next) {
            if (!all[next].picture)
                group += styledRun(all[next], place);
        }
        if (!link.isEmpty()) {
            const QString shown = group.trimmed().isEmpty() ? escapeText(link, place) : group;
            group = u'[' + shown + QStringLiteral("](") + markdownLinkTarget(link) + u')';
        }
        text += group;
        i = next;
    }
    if (place != MarkdownPlace::paragraph)
        return escapeLineStart(text);
    QStringList lines = text.split(u'\n');
    for (QString& line : lines)
        line = escapeLineStart(line);
    return lines.join(u'\n');
}

}  // namespace wendrel::document
