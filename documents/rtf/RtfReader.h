#pragma once

#include <QByteArray>

#include <memory>

class QTextDocument;

namespace wendrel {

// Reads Rich Text Format into the document model: headings, inline styles, links, lists,
// tables (nested and merged), pictures (PNG and JPEG) and line breaks. Headers, footers,
// footnotes, comments and document information are left out. Throws OperationError when the
// bytes aren't RTF or ask for more than a document can hold; damaged RTF (unbalanced braces,
// broken escapes, cut-off data) is read as far as it makes sense.
std::unique_ptr<QTextDocument> readRtf(const QByteArray& rtf);

}  // namespace wendrel
