#pragma once

#include <QString>

class QTextBlock;

namespace wendrel::document {

// Where a paragraph's Markdown goes, which decides how a line break is written.
enum class MarkdownPlace {
    paragraph,  // a backslash ending the line
    heading,    // a space: a heading is one line
    tableCell,  // "<br>", and "|" escaped even in code
};

// The inline Markdown of a block's runs (pictures left out), escaped so no text is taken for
// markup, lines beginning as a paragraph would begin (no indentation).
QString blockMarkdown(const QTextBlock& block, MarkdownPlace place);

// A link target as Markdown accepts it between parentheses.
QString markdownLinkTarget(const QString& target);

}  // namespace wendrel::document
