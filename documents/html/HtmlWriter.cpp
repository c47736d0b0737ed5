#include "HtmlWriter.h"

#include "documents/model/DocumentModel.h"
#include "documents/model/DocumentWalk.h"

#include <QList>
#include <QTextDocument>
#include <QTextList>
#include <QTextTable>

#include <cmath>

namespace wendrel {

using namespace Qt::StringLiterals;

namespace {

using document::InlineStyle;
using document::Run;

// Characters XML 1.0 can't hold at all (most control characters, unpaired surrogates, the two
// non-characters U+FFFE and U+FFFF) are left out: one of them would make the whole chapter
// unreadable to an EPUB reader.
bool isXmlCharacter(QChar c)
{
    const char16_t code = c.unicode();
    if (code < 0x20)
        return code == u'\t' || code == u'\n' || code == u'\r';
    return code != 0xFFFE && code != 0xFFFF;
}

void appendEscaped(QString& out, QStringView text, bool inAttribute)
{
    for (qsizetype i = 0; i < text.size(); ++i) {
        const QChar c = text[i];
        if (c.isHighSurrogate() && i + 1 < text.size() && text[i + 1].isLowSurrogate()) {
            out += c;
            out += text[++i];
            continue;
        }
        if (c.isSurrogate() || !isXmlCharacter(c))
            continue;
        switch (c.unicode()) {
        case u'&': out += u"&amp;"_s; break;
        case u'<': out += u"&lt;"_s; break;
        case u'>': out += u"&gt;"_s; break;
        case u'"':
            if (inAttribute)
                out += u"&quot;"_s;
            else
                out += c;
            break;
        case QChar::LineSeparator:
            if (inAttribute)
                out += u' ';
            else
                out += u"<br/>"_s;
            break;
        default: out += c;
        }
    }
}

QString escaped(QStringView text, bool inAttribute = false)
{
    QString out;
    out.reserve(text.size());
    appendEscaped(out, text, inAttribute);
    return out;
}

// The type attribute of a numbered list counted other than 1, 2, 3.
QString orderedListType(const QTextList& list)
{
    switch (list.format().style()) {
    case QTextListFormat::ListLowerAlpha: return QStringLiteral("a");
    case QTextListFormat::ListUpperAlpha: return QStringLiteral("A");
    case QTextListFormat::ListLowerRoman: return QStringLiteral("i");
    case QTextListFormat::ListUpperRoman: return QStringLiteral("I");
    default: return {};
    }
}

// A cell holding one plain paragraph is written without a p element: "<td>42</td>".
bool holdsOnePlainParagraph(const QTextTableCell& cell)
{
    int blocks = 0;
    for (auto it = cell.begin(); !it.atEnd(); ++it) {
        if (it.currentFrame())
            return false;
        const QTextBlock block = it.currentBlock();
        if (++blocks > 1 || document::headingLevel(block) || document::listPlacement(block))
            return false;
    }
    return blocks == 1;
}

// CSS pixels (96 to the inch) from the model's points, for an img element's width and height.
int cssPixels(double points) { return std::max(1, static_cast<int>(std::lround(points * 96.0 / 72.0))); }

class BodyWriter final : public document::DocumentVisitor {
public:
    BodyWriter(const QTextDocument& document, const QStringList& excluded) : m_document(document)
    {
        for (const QString& name : excluded)
            m_excluded.append(name.trimmed().toLower());
    }

    void block(const QTextBlock& block) override
    {
        const QList<Run> content = document::runs(block);
        if (const auto placement = document::listPlacement(block)) {
            openListItem(*block.textList(), *placement);
            writeRuns(content, false);
            return;
        }
        closeLists(0);
        if (m_bareCell) {
            m_bareCell = false;
            writeRuns(content, false);
            return;
        }
        if (content.isEmpty())
            return;  // an empty paragraph is spacing, which the page's margins give
        const int level = document::headingLevel(block);
        const QString tag = level ? QStringLiteral("h%1").arg(level) : QStringLiteral("p");
        m_out += u'<' + tag + u'>';
        // Headings are bold by their nature; a strong element in each would say nothing.
        writeRuns(content, level > 0);
        m_out += u"</"_s + tag + u">\n"_s;
    }

    void beginTable(const QTextTable& table) override
    {
        closeLists(0);
        m_headerRows.append(std::clamp(table.format().headerRowCount(), 0, table.rows()));
        m_out += u"<table>\n"_s;
    }

    void endTable(const QTextTable&) override
    {
        m_headerRows.removeLast();
        m_out += u"</table>\n"_s;
    }

    void beginRow(const QTextTable&, int row) override
    {
        const int headerRows = m_headerRows.last();
        if (row == 0 && headerRows > 0)
            m_out += u"<thead>\n"_s;
        if (row == headerRows)
            m_out += u"<tbody>\n"_s;
        m_out += u"<tr>"_s;
    }

    void endRow(const QTextTable& table, int row) override
    {
        const int headerRows = m_headerRows.last();
        m_out += u"</tr>\n"_s;
        if (row == headerRows - 1)
            m_out += u"</thead>\n"_s;
        if (row == table.rows() - 1 && row >= headerRows)
            m_out += u"</tbody>\n"_s;
    }

    void beginCell(const QTextTableCell& cell) override
    {
        closeLists(0);
        m_out += u'<' + cellTag(cell);
        if (cell.columnSpan() > 1)
            m_out += QStringLiteral(" colspan=\"%1\"").arg(cell.columnSpan());
        if (cell.rowSpan() > 1)
            m_out += QStringLiteral(" rowspan=\"%1\"").arg(cell.rowSpan());
        m_out += u'>';
        m_bareCell = holdsOnePlainParagraph(cell);
        if (!m_bareCell)
            m_out += u'\n';
    }

    void endCell(const QTextTableCell& cell) override
    {
        closeLists(0);
        m_bareCell = false;
        m_out += u"</"_s + cellTag(cell) + u'>';
    }

    QString finish()
    {
        closeLists(0);
        return std::move(m_out);
    }

private:
    struct OpenList {
        QString tag;        // "ul", or "ol" with its type attribute
        int level = 1;
    };

    QString cellTag(const QTextTableCell& cell) const
    {
        return cell.row() < m_headerRows.last() ? QStringLiteral("th") : QStringLiteral("td");
    }

    bool isExcluded(QStringView element) const { return m_excluded.contains(element); }

    // Lists deeper than `level` end here, each with the item it is nested in.
    void closeLists(int level)
    {
        while (!m_lists.isEmpty() && m_lists.last().level > level) {
            m_out += u"</li>\n</"_s + m_lists.last().tag.section(u' ', 0, 0) + u">\n"_s;
            m_lists.removeLast();  // the parent item stays open for what follows the nested list
        }
    }

    // A nested list goes inside the item before it, as HTML wants; a level that skips one
    // nests a single step, as there is no item to hold the missing level.
    void openListItem(const QTextList& list, const document::ListPlacement& placement)
    {
        QString tag = QStringLiteral("ul");
        if (placement.ordered) {
            tag = QStringLiteral("ol");
            if (const QString type = orderedListType(list); !type.isEmpty())
                tag += QStringLiteral(" type=\"%1\"").arg(type);
        }
        closeLists(placement.level);
        if (!m_lists.isEmpty() && m_lists.last().level == placement.level) {
            if (m_lists.last().tag == tag) {
                m_out += u"</li>\n<li>"_s;
                return;
            }
            closeLists(placement.level - 1);  // the same level, another kind: a new list
        }
        if (!m_lists.isEmpty())
            m_out += u'\n';
        m_out += u'<' + tag + u">\n<li>"_s;
        m_lists.append({tag, placement.level});
    }

    void writeRuns(const QList<Run>& content, bool inHeading)
    {
        QString openLink;
        const bool linksExcluded = isExcluded(u"a"_s);
        for (const Run& run : content) {
            // A link over several differently styled runs stays one element.
            const QString link = linksExcluded ? QString() : run.style.link;
            if (link != openLink) {
                if (!openLink.isEmpty())
                    m_out += u"</a>"_s;
                if (!link.isEmpty())
                    m_out += u"<a href=\""_s + escaped(link, true) + u"\">"_s;
                openLink = link;
            }
            if (run.picture)
                writePicture(*run.picture);
            else
                writeStyledText(run, inHeading);
        }
        if (!openLink.isEmpty())
            m_out += u"</a>"_s;
    }

    void writeStyledText(const Run& run, bool inHeading)
    {
        const InlineStyle& style = run.style;
        const std::pair<bool, QStringView> elements[] = {
            {style.bold && !inHeading, u"strong"},
            {style.italic, u"em"},
            {style.underline, u"u"},
            {style.strike, u"s"},
            {style.code, u"code"},
        };
        for (const auto& [on, element] : elements) {
            if (on && !isExcluded(element)) {
                m_out += u'<';
                m_out += element;
                m_out += u'>';
            }
        }
        appendEscaped(m_out, run.text, false);
        for (auto it = std::rbegin(elements); it != std::rend(elements); ++it) {
            if (it->first && !isExcluded(it->second)) {
                m_out += u"</"_s;
                m_out += it->second;
                m_out += u'>';
            }
        }
    }

    void writePicture(const QTextImageFormat& format)
    {
        if (isExcluded(u"img"_s))
            return;
        const auto picture = document::picture(m_document, format);
        if (!picture)
            return;  // nothing that can be shown: no broken picture on the page
        // The size it is shown at, in points; a missing side keeps the picture's proportions.
        double width = format.width();
        double height = format.height();
        const double aspect = double(picture->pixelHeight) / picture->pixelWidth;
        if (width <= 0 && height <= 0) {
            width = picture->pixelWidth * 0.75;
            height = picture->pixelHeight * 0.75;
        } else if (width <= 0) {
            width = height / aspect;
        } else if (height <= 0) {
            height = width * aspect;
        }
        m_out += u"<img alt=\"\" src=\"data:"_s + picture->mimeType + u";base64,"_s
                 + QString::fromLatin1(picture->bytes.toBase64())
                 + QStringLiteral("\" width=\"%1\" height=\"%2\"/>").arg(cssPixels(width)).arg(cssPixels(height));
    }

    const QTextDocument& m_document;
    QStringList m_excluded;
    QString m_out;
    QList<OpenList> m_lists;   // each with its last item still open
    QList<int> m_headerRows;   // of the tables being written, innermost last
    bool m_bareCell = false;
};

// Readable on screen and on paper; nothing in it needs escaping in XML.
constexpr char16_t styleSheet[] =
    u"body{font-family:sans-serif;line-height:1.45;max-width:46em;margin:2em auto;padding:0 1em}"
    u"table{border-collapse:collapse;margin:1em 0}"
    u"th,td{border:1px solid #999;padding:0.25em 0.5em;vertical-align:top}"
    u"th{background:#eee;text-align:left}"
    u"code{font-family:monospace}"
    u"img{max-width:100%;height:auto}";

}  // namespace

QString documentToHtml(const QTextDocument& document, const HtmlExport& options)
{
    BodyWriter body(document, options.excludedElements);
    if (!document.isEmpty())
        document::walkDocument(document, body);

    // No XHTML namespace on the root: file managers would then take the page for XHTML.
    QString page = QStringLiteral("<!DOCTYPE html>\n<html>\n<head>\n"
                                  "<meta charset=\"utf-8\"/>\n<title>");
    appendEscaped(page, options.title, true);  // as an attribute: no br element in a title
    page += u"</title>\n"_s;
    const bool styled = !std::any_of(options.excludedElements.begin(), options.excludedElements.end(),
                                     [](const QString& name) { return name.trimmed().toLower() == u"style"_s; });
    if (styled)
        page += u"<style>"_s + QString::fromUtf16(styleSheet) + u"</style>\n"_s;
    // Each block ends its own line, so an empty document gives an empty body.
    const QString blocks = body.finish();
    page += u"</head>\n<body>"_s + (blocks.isEmpty() ? QString() : u'\n' + blocks) + u"</body>\n</html>\n"_s;
    return page;
}

}  // namespace wendrel
