#pragma once

#include <QString>

#include <memory>

class QTextDocument;

namespace wendrel {

// Reads a Word document (WordprocessingML in a ZIP package) into the document model: headings
// by their styles, inline styles, links, nested lists by their numbering, tables with spans
// and heading rows, and pictures. Parts are read with bounded sizes, pictures within a total
// budget. Throws OperationError when the file can't be read as one.
std::unique_ptr<QTextDocument> readDocx(const QString& path);

}  // namespace wendrel
