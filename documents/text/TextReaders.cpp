#include "TextReaders.h"

#include "ImportedDocument.h"
#include "MarkdownLineBreaks.h"

#include <QTextCursor>

namespace wendrel::document {

std::unique_ptr<QTextDocument> readPlainText(const QString& text)
{
    QString lines = text;
    if (lines.startsWith(QChar(0xfeff)))
        lines.remove(0, 1);
    lines.replace(QStringLiteral("\r\n"), QStringLiteral("\n"));
    lines.replace(u'\r', u'\n');
    if (lines.endsWith(u'\n'))
        lines.chop(1);  // the last line's end, not an empty line after it
    auto document = std::make_unique<QTextDocument>();
    document->setPlainText(lines);
    return document;
}

std::unique_ptr<QTextDocument> readMarkdown(const QString& markdown, const QString& baseFolder)
{
    auto document = std::make_unique<ImportedDocument>(baseFolder);
    // Qt's Markdown reader edits the document outside an edit block, so after every table cell
    // it rescans the whole document for frames, and every insertion goes on the undo stack:
    // quadratic in a long manual. One edit block around the reading makes it linear; the frames
    // (tables) are found once, at its end.
    document->setUndoRedoEnabled(false);
    QTextCursor batch(document.get());
    batch.beginEditBlock();
    document->setMarkdown(markHardLineBreaks(markdown), QTextDocument::MarkdownDialectGitHub);
    batch.endEditBlock();
    normaliseImported(*document, ImportedFrom::markdown);
    return document;
}

std::unique_ptr<QTextDocument> readHtml(const QString& html, const QString& baseFolder)
{
    auto document = std::make_unique<ImportedDocument>(baseFolder);
    document->setUndoRedoEnabled(false);
    document->setHtml(html);
    normaliseImported(*document, ImportedFrom::html);
    return document;
}

}  // namespace wendrel::document
