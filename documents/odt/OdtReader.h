#pragma once

#include <QString>
#include <QTextDocument>

#include <memory>

namespace wendrel::document {

// Reads an OpenDocument text file into the document model: headings (outline headings, and
// paragraphs whose style is a heading style), inline styles from automatic and named text
// styles, nested lists numbered or bulleted as their list style says, tables with heading
// rows and spans, links, line breaks, spaces and tabs, and the package's pictures. Only the
// package is read, each part held to a size, its XML without DTDs and to a nesting depth.
// Throws OperationError when the file isn't an OpenDocument text or can't be read.
std::unique_ptr<QTextDocument> readOdt(const QString& path);

}  // namespace wendrel::document
