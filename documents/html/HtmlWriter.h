#pragma once

#include <QString>
#include <QStringList>

class QTextDocument;

namespace wendrel {

struct HtmlExport {
    QString title;
    // Elements to leave out, by name ("img", "a", "strong", "em", "u", "s", "code", "style"): an
    // inline element's text stays without its tags, a picture goes with its tag, "style" drops
    // the stylesheet. Other names are ignored: the page's structure is always written.
    QStringList excludedElements;
};

// The document as one self-contained HTML5 page that is also well-formed XML, so it can serve
// as an EPUB chapter: lower-case elements, quoted attributes, void elements self-closed, only
// the character references XML knows. Headings, paragraphs, inline styles and links, lists
// nested inside their parent item, tables with their heading rows in thead and spans as
// colspan/rowspan, line breaks, and pictures embedded as data: URLs.
QString documentToHtml(const QTextDocument& document, const HtmlExport& options);

}  // namespace wendrel
