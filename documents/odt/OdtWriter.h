#pragma once

#include <QString>

class QTextDocument;

namespace wendrel::document {

// Writes the document as an OpenDocument text file: headings as outline headings with the
// standard "Heading N" styles, inline styles as automatic text styles, nested lists with list
// styles that say per level whether they are numbered, tables with heading rows and spans,
// links, line breaks, and pictures inside the package. (Qt's own ODF writer keeps none of
// headings, code or heading rows.) The file appears complete or not at all; throws
// OperationError "Couldn't save the document" when it can't be written.
void writeOdt(const QTextDocument& document, const QString& path);

}  // namespace wendrel::document
