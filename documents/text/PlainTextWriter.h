#pragma once

#include <QString>

class QTextDocument;

namespace wendrel::document {

// The document as plain text: paragraphs and headings separated by a blank line, list items on
// lines of their own ("• " or "1. ", two spaces of indentation per nesting level), a table's
// rows on lines of their own with tabs between cells. Line breaks are kept; pictures, which
// text can't hold, are left out.
QString documentToPlainText(const QTextDocument& document);

}  // namespace wendrel::document
