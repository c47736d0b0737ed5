#pragma once

#include <QString>

namespace wendrel::document {

// Qt's Markdown reader turns a hard line break (a backslash or two spaces ending a line of a
// paragraph) into a new paragraph. This marks each one with QChar::LineSeparator instead, on
// one line with what follows, so the reader keeps it inside the paragraph. Lines in fenced
// code, headings, table rows, and lines followed by one that begins a block of its own (no
// break there in Markdown either) are left alone.
QString markHardLineBreaks(const QString& markdown);

}  // namespace wendrel::document
