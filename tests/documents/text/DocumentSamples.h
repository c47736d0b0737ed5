#pragma once

#include <QByteArray>
#include <QList>
#include <QSizeF>
#include <QString>

#include <memory>

class QTextDocument;

namespace wendrel::test {

// A document with everything the formats are asked to keep: headings, inline styles, a link,
// nested bulleted and numbered lists, a table with a heading row, a picture and a line break.
std::unique_ptr<QTextDocument> richSampleDocument();

// A small PNG (40 × 20, red) for pictures in test documents.
QByteArray samplePng();

// The document's structure as text, one line per block, so two documents compare with a
// readable difference: "h1 Title", "p text with **bold** *italic* _under_ ~~strike~~ `code`
// [link](target)", "ul1 item", "ol2 item", "table 3x2 header 1", "cell 0,1 text",
// "picture 40x20", a line break as "⏎". Only what the model defines is described (no fonts,
// sizes or colours). `withStyles` false leaves inline styles and links out, for formats that
// can't carry them.
QString structureOf(const QTextDocument& document, bool withStyles = true);

// The size in points each picture is shown at, in the document's order.
QList<QSizeF> pictureSizes(const QTextDocument& document);

}  // namespace wendrel::test
