#pragma once

#include <QByteArray>

class QTextDocument;

namespace wendrel {

// Writes the document model as Rich Text Format (plain ASCII): headings as "heading N" styles
// with outline levels, inline styles, links as HYPERLINK fields, lists with list tables and typed
// markers for simpler readers, tables (nested and merged) and PNG or JPEG pictures.
QByteArray writeRtf(const QTextDocument& document);

}  // namespace wendrel
