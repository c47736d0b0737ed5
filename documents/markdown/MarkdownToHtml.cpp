#include "MarkdownToHtml.h"

#include <QRegularExpression>

namespace wendrel {

using namespace Qt::StringLiterals;

namespace {

// The inline rules are global replacements of simple patterns, each over the result of the one
// before. Most are "a mark, one or more characters other than the mark, the mark again": those
// and the link forms run as linear scans that give exactly what the pattern's replacement
// would, without the cost of a regular expression engine per paragraph (a large file holds
// tens of thousands of paragraphs).

// Where `count` marks in a row start at or after `from`; -1 when nowhere.
qsizetype findDelimiter(const QString& text, QChar mark, qsizetype count, qsizetype from)
{
    for (qsizetype at = text.indexOf(mark, from); at >= 0; at = text.indexOf(mark, at + 1)) {
        if (count == 1 || (at + 1 < text.size() && text[at + 1] == mark))
            return at;
    }
    return -1;
}

// Every match of  M{count}([^M]+)M{count}  (M the mark, count 1 or 2) replaced by
// open + $1 + close, leftmost first and without overlap, as a global replacement does.
QString replaceDelimited(const QString& text, QChar mark, qsizetype count, QStringView open, QStringView close)
{
    qsizetype start = findDelimiter(text, mark, count, 0);
    if (start < 0)
        return text;
    QString result;
    result.reserve(text.size() + 32);
    qsizetype copied = 0;
    while (start >= 0) {
        const qsizetype contentStart = start + count;
        const qsizetype contentEnd = text.indexOf(mark, contentStart);
        if (contentEnd < 0)
            break;  // no mark after this one: nothing further can match
        if (contentEnd > contentStart && findDelimiter(text, mark, count, contentEnd) == contentEnd) {
            result += QStringView(text).sliced(copied, start - copied);
            result += open;
            result += QStringView(text).sliced(contentStart, contentEnd - contentStart);
            result += close;
            copied = contentEnd + count;
            start = findDelimiter(text, mark, count, copied);
        } else {
            start = findDelimiter(text, mark, count, start + 1);
        }
    }
    result += QStringView(text).sliced(copied);
    return result;
}

// Every match of  \[([^\]]+)\]\(([^)]+)\)  as a link, or with `picture` of
// !\[([^\]]*)\]\(([^)]+)\)  as an img element, replaced as a global replacement does.
QString replaceLinks(const QString& text, bool picture)
{
    // Where the next "[" (or "![") starts at or after `from`; -1 when nowhere.
    const auto findOpening = [&](qsizetype from) -> qsizetype {
        for (qsizetype at = text.indexOf(u'[', from + (picture ? 1 : 0)); at >= 0; at = text.indexOf(u'[', at + 1)) {
            if (!picture)
                return at;
            if (text[at - 1] == u'!')
                return at - 1;
        }
        return -1;
    };
    const qsizetype openingSize = picture ? 2 : 1;
    qsizetype start = findOpening(0);
    if (start < 0)
        return text;
    QString result;
    result.reserve(text.size() + 32);
    qsizetype copied = 0;
    while (start >= 0) {
        const qsizetype labelStart = start + openingSize;
        const qsizetype labelEnd = text.indexOf(u']', labelStart);
        if (labelEnd < 0)
            break;  // no "]" after this opening: none further can match
        const bool labelFits = picture || labelEnd > labelStart;
        if (labelFits && labelEnd + 1 < text.size() && text[labelEnd + 1] == u'(') {
            const qsizetype targetStart = labelEnd + 2;
            const qsizetype targetEnd = text.indexOf(u')', targetStart);
            if (targetEnd < 0)
                break;  // no ")" after this "](": none further can match
            if (targetEnd > targetStart) {
                const QStringView label = QStringView(text).sliced(labelStart, labelEnd - labelStart);
                const QStringView target = QStringView(text).sliced(targetStart, targetEnd - targetStart);
                result += QStringView(text).sliced(copied, start - copied);
                if (picture) {
                    result += u"<img alt=\"";
                    result += label;
                    result += u"\" src=\"";
                    result += target;
                    result += u"\">";
                } else {
                    result += u"<a href=\"";
                    result += target;
                    result += u"\">";
                    result += label;
                    result += u"</a>";
                }
                copied = targetEnd + 1;
                start = findOpening(copied);
                continue;
            }
        }
        // Every opening before this "]" ends its label there too, and fails the same way.
        start = findOpening(labelEnd);
    }
    result += QStringView(text).sliced(copied);
    return result;
}

// Emphasis with single underscores, only where neither side touches a word character of any
// script: snake_case and nom_de_plume stay as they are.
QString replaceUnderscoreEmphasis(const QString& text)
{
    static const QRegularExpression pattern = [] {
        QRegularExpression expression(u"(?<![\\w])_([^_]+)_(?![\\w])"_s,
                                      QRegularExpression::UseUnicodePropertiesOption);
        expression.optimize();
        return expression;
    }();
    QString result = text;
    result.replace(pattern, u"<em>\\1</em>"_s);
    return result;
}

void escapeMarkup(QString& text)
{
    text.replace(u'&', QStringLiteral("&amp;"));
    text.replace(u'<', QStringLiteral("&lt;"));
    text.replace(u'>', QStringLiteral("&gt;"));
}

// Only blanks and tabs count as space around a line.
QStringView trimmedLine(QStringView line)
{
    const auto isSpace = [](QChar c) { return c == u' ' || c == u'\t'; };
    qsizetype start = 0;
    qsizetype end = line.size();
    while (start < end && isSpace(line[start]))
        ++start;
    while (end > start && isSpace(line[end - 1]))
        --end;
    return line.sliced(start, end - start);
}

// The number of "#"s of a heading line ("## Title"), or 0 when the line is no heading.
qsizetype headingLevel(QStringView line)
{
    qsizetype level = 0;
    while (level < line.size() && line[level] == u'#')
        ++level;
    return level > 0 && level < line.size() && line[level] == u' ' ? level : 0;
}

enum class ListKind { none, unordered, ordered };

QString listTag(ListKind kind) { return kind == ListKind::ordered ? QStringLiteral("ol") : QStringLiteral("ul"); }

struct ListItem {
    ListKind kind = ListKind::none;
    QStringView text;
};

// "- ", "* " and "+ " start a bulleted item, digits with ". " a numbered one.
ListItem listItem(QStringView line)
{
    if (line.startsWith(u"- "_s) || line.startsWith(u"* "_s) || line.startsWith(u"+ "_s))
        return {ListKind::unordered, line.sliced(2)};
    qsizetype digits = 0;
    while (digits < line.size() && line[digits] >= u'0' && line[digits] <= u'9')
        ++digits;
    if (digits > 0 && line.sliced(digits).startsWith(u". "_s))
        return {ListKind::ordered, line.sliced(digits + 2)};
    return {};
}

// Writes the blocks straight into the page, one line feed between them.
class BlockWriter {
public:
    explicit BlockWriter(QString& page) : m_page(page) {}

    void line(QStringView rawLine)
    {
        const QStringView trimmed = trimmedLine(rawLine);
        if (trimmed.startsWith(u"```")) {
            if (m_fenceOpen) {
                closeFence();
            } else {
                flush();
                closeList();
                m_fenceOpen = true;  // anything after the back-quotes (a language) is ignored
            }
            return;
        }
        if (m_fenceOpen) {
            if (m_fenceLines++ > 0)
                m_fence += u'\n';
            m_fence += rawLine;  // untrimmed: indentation is the code's own
            return;
        }
        if (trimmed.isEmpty()) {
            flush();
            closeList();
            return;
        }
        if (const qsizetype level = headingLevel(trimmed)) {
            flush();
            closeList();
            const QString number = QString::number(level);
            startBlock();
            m_page += u"<h";
            m_page += number;
            m_page += u'>';
            m_page += inlineMarkdown(trimmedLine(trimmed.sliced(level)).toString());
            m_page += u"</h";
            m_page += number;
            m_page += u'>';
            return;
        }
        if (trimmed == u"---" || trimmed == u"***") {
            flush();
            closeList();
            startBlock();
            m_page += u"<hr>";
            return;
        }
        if (trimmed.startsWith(u"> ")) {
            flush();
            closeList();
            startBlock();
            m_page += u"<blockquote><p>";
            m_page += inlineMarkdown(trimmed.sliced(2).toString());
            m_page += u"</p></blockquote>";
            return;
        }
        if (const ListItem item = listItem(trimmed); item.kind != ListKind::none) {
            flush();
            if (m_list != item.kind) {
                closeList();
                startBlock();
                m_page += u'<';
                m_page += listTag(item.kind);
                m_page += u'>';
                m_list = item.kind;
            }
            startBlock();
            m_page += u"<li>";
            m_page += inlineMarkdown(item.text.toString());
            m_page += u"</li>";
            return;
        }
        if (!m_paragraph.isEmpty())
            m_paragraph += u' ';
        m_paragraph += trimmed;
    }

    void finish()
    {
        if (m_fenceOpen)
            closeFence();  // a fence never closed still ends as code
        flush();
        closeList();
    }

private:
    void startBlock()
    {
        if (m_blocks++ > 0)
            m_page += u'\n';
    }

    // Paragraph lines are never empty (an empty line ends the paragraph), so an empty text is
    // no paragraph.
    void flush()
    {
        if (m_paragraph.isEmpty())
            return;
        startBlock();
        m_page += u"<p>";
        m_page += inlineMarkdown(m_paragraph);
        m_page += u"</p>";
        m_paragraph.clear();
    }

    void closeList()
    {
        if (m_list == ListKind::none)
            return;
        startBlock();
        m_page += u"</";
        m_page += listTag(m_list);
        m_page += u'>';
        m_list = ListKind::none;
    }

    void closeFence()
    {
        escapeMarkup(m_fence);
        startBlock();
        m_page += u"<pre><code>";
        m_page += m_fence;
        m_page += u"</code></pre>";
        m_fence.clear();
        m_fenceLines = 0;
        m_fenceOpen = false;
    }

    QString& m_page;
    qsizetype m_blocks = 0;
    QString m_paragraph;  // its lines joined with blanks
    ListKind m_list = ListKind::none;
    bool m_fenceOpen = false;
    QString m_fence;      // its lines joined with line feeds
    qsizetype m_fenceLines = 0;
};

}  // namespace

QString inlineMarkdown(const QString& text)
{
    // One look at the text tells which rules can match at all; the tags the rules write hold
    // none of these characters, so what is absent now stays absent.
    bool markup = false, backQuote = false, bracket = false, asterisk = false, underscore = false, tilde = false;
    for (const QChar c : text) {
        switch (c.unicode()) {
        case u'&': case u'<': case u'>': markup = true; break;
        case u'`': backQuote = true; break;
        case u'[': bracket = true; break;
        case u'*': asterisk = true; break;
        case u'_': underscore = true; break;
        case u'~': tilde = true; break;
        default: break;
        }
    }
    QString result = text;
    if (markup)
        escapeMarkup(result);
    if (backQuote)
        result = replaceDelimited(result, u'`', 1, u"<code>", u"</code>");
    if (bracket) {
        // Pictures before links, so the "!" form is not taken for a link.
        result = replaceLinks(result, true);
        result = replaceLinks(result, false);
    }
    if (asterisk)
        result = replaceDelimited(result, u'*', 2, u"<strong>", u"</strong>");
    if (underscore)
        result = replaceDelimited(result, u'_', 2, u"<strong>", u"</strong>");
    if (asterisk)
        result = replaceDelimited(result, u'*', 1, u"<em>", u"</em>");
    if (underscore)
        result = replaceUnderscoreEmphasis(result);
    if (tilde)
        result = replaceDelimited(result, u'~', 2, u"<del>", u"</del>");
    return result;
}

QString markdownToHTML(const QString& markdown, const QString& title)
{
    QString text = markdown;
    if (text.contains(u'\r'))
        text.replace(u"\r\n"_s, u"\n"_s);
    QString escapedTitle = title;
    escapeMarkup(escapedTitle);

    QString page;
    page.reserve(text.size() + text.size() / 4 + 512);
    page += u"<!DOCTYPE html>\n<html><head><meta charset=\"utf-8\"><title>";
    page += escapedTitle;
    page += u"</title>\n<style>body{font-family:-apple-system,Helvetica,sans-serif;font-size:12pt;"
            u"line-height:1.45}pre{font-family:Menlo,monospace;font-size:10pt;background:#f4f4f4;"
            u"padding:8px}code{font-family:Menlo,monospace}</style>\n</head><body>\n";
    BlockWriter writer(page);
    for (qsizetype start = 0; start <= text.size();) {
        qsizetype end = text.indexOf(u'\n', start);
        if (end < 0)
            end = text.size();
        writer.line(QStringView(text).sliced(start, end - start));
        start = end + 1;
    }
    writer.finish();
    page += u"\n</body></html>";
    return page;
}

}  // namespace wendrel
