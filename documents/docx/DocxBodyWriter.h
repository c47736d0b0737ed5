#pragma once

#include <QByteArray>
#include <QList>
#include <QString>

class QTextDocument;

namespace wendrel::docx {

// What a document adds to the fixed parts of a package.
struct WrittenBody {
    struct Media {
        QString partName;  // "word/media/image1.png"
        QByteArray bytes;
    };

    QByteArray documentXml;     // word/document.xml
    QByteArray relationships;   // <Relationship> elements for links and pictures
    QByteArray numberings;      // <w:num> elements, one per list
    QList<Media> media;
};

// The body of `document` as WordprocessingML: headings as HeadingN paragraphs, runs with
// their inline styles, links through relationships, nested lists each with a numbering of
// its own, tables with heading rows and spans, pictures as inline drawings.
WrittenBody writeBody(const QTextDocument& document);

// `text` without the characters XML can't hold (most controls, lone surrogates, U+FFFE/FFFF).
QString xmlSafe(const QString& text);

}  // namespace wendrel::docx
