#pragma once

#include <QString>

class QTextDocument;

namespace wendrel::document {

// Prints the document to a PDF at `path`: pages of the locale's paper size (defaultPaper())
// with 20 mm margins and the page number below the text, body text in DejaVu Sans (embedded,
// as every font is, so the text can be selected and searched), pictures drawn, links
// clickable, `title` in the PDF's metadata. The file appears complete or not at all. Needs a
// QGuiApplication (for fonts) but no display, and runs on any thread. Throws OperationError
// "Couldn't save the PDF" when the file can't be written.
void writeDocumentPdf(const QTextDocument& document, const QString& path, const QString& title);

}  // namespace wendrel::document
