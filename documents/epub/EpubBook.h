#pragma once

#include <QByteArray>
#include <QString>

class QTextDocument;

namespace wendrel {

// The document as a reflowable EPUB 3 book of one chapter, built in memory: "mimetype" first
// and stored, then the container, the package document (a fresh UUID, the title, the user's
// language, the moment of writing), the navigation document and the chapter. Throws
// OperationError when the package can't be written.
QByteArray makeEPUB(const QTextDocument& document, const QString& title);

// "&", "<" and ">" as references, for the title wherever the book names it (element content
// only, so quotes stay).
QString escapedBookTitle(const QString& title);

// The chapter's body from an HTML page: what lies between the first <body ...> tag and the
// last </body> (the whole text when either is missing), with br, hr, img, meta, link and input
// tags self-closed (attributes kept), and &nbsp; as &#160; since XHTML knows no named
// references beyond XML's own.
QString chapterBody(const QString& html);

}  // namespace wendrel
