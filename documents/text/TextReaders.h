#pragma once

#include <QString>
#include <QTextDocument>

#include <memory>

namespace wendrel::document {

// Plain text: every line its own paragraph, empty lines kept as empty paragraphs. A text file
// is laid out by its lines, and a line is what its writer meant to stand alone (an address, a
// list, a poem), so each one stays where it was; joining lines into paragraphs would run them
// together wherever a writer didn't leave a blank line.
std::unique_ptr<QTextDocument> readPlainText(const QString& text);

// GitHub-flavoured Markdown. Pictures are read from `baseFolder` (the Markdown file's folder)
// when their paths are relative; see readPictureSource for what is read.
std::unique_ptr<QTextDocument> readMarkdown(const QString& markdown, const QString& baseFolder);

// HTML, pictures read as for Markdown.
std::unique_ptr<QTextDocument> readHtml(const QString& html, const QString& baseFolder);

}  // namespace wendrel::document
