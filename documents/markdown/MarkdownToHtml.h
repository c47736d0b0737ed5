#pragma once

#include <QString>

namespace wendrel {

// Markdown to a complete HTML page, line by line with a handful of block rules and a fixed
// sequence of inline replacements. Deliberately small and predictable rather than a full
// Markdown parser: every file gives a page, and the same file always gives the same page.
//
// Block rules, the first that applies to a line (trimmed of blanks and tabs) wins:
// "```" opens or closes a code block (an unclosed one ends with the file); inside one, lines
// are kept as they stand; an empty line ends the paragraph and the list; "#"s and a blank make
// a heading whose level is the number of "#"s (no upper bound: "#######" gives h7); "---" or
// "***" a rule; "> " a one-line quotation; "- ", "* ", "+ " or "1. " a list item (a change of
// kind ends one list and starts the other); anything else joins the pending paragraph.
// `title` goes into the page's title element, escaped.
QString markdownToHTML(const QString& markdown, const QString& title);

// The inline rules on `text`, in this order, each a global replacement of the result before:
// escape & < >; `code`; ![alt](src) as img; [text](href) as a link; **strong**, __strong__,
// *em*, _em_ (not inside a word, so snake_case stays), ~~del~~. A flat sequence, not a parser:
// a code span is not protected from the rules after it.
QString inlineMarkdown(const QString& text);

}  // namespace wendrel
