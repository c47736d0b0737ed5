#pragma once

#include <QString>

class QTextDocument;

namespace wendrel::document {

// The document as GitHub-flavoured Markdown: "#" headings; **bold**, *italic*, ~~struck~~,
// `code` and [links](target); nested lists indented to their parent item's text; tables with
// their first row as the heading row (the only kind the dialect has); line breaks as a
// backslash at the end of the line ("<br>" inside a table). Characters Markdown would take
// for markup are escaped. Underlining has no Markdown form and is left as plain text.
// Pictures are left out: a single Markdown file can only refer to pictures kept elsewhere.
QString documentToMarkdown(const QTextDocument& document);

}  // namespace wendrel::document
