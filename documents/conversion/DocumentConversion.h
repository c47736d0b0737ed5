#pragma once

#include "DocumentTarget.h"

#include <QString>

#include <memory>

class QTextDocument;

namespace wendrel {

// Reads a document of any format the convert ring takes (plain text, Markdown, HTML, RTF,
// DOCX, ODT) into the document model, choosing the reader by the file's type. Throws
// OperationError "Can't read this document" whatever went wrong inside the reader, and a
// message of its own for a file too large to convert.
std::unique_ptr<QTextDocument> readDocument(const QString& path);

// Writes `document` as `target` to `path`; `title` names the document where the format keeps
// one (the page title, the book's title). Throws OperationError when it can't be written.
void writeDocument(const QTextDocument& document, DocumentTarget target, const QString& path, const QString& title);

}  // namespace wendrel
