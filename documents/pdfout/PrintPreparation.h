#pragma once

class QTextDocument;

namespace wendrel::document {

// Turns a copy of a document into one ready for the page: the body font, readable table
// borders and padding, space around paragraphs and headings that have none of their own, and
// pictures sized from the model's points to what Qt's layout takes (pixels of 1/96 inch),
// none wider than `textWidthPixels` (in those pixels).
void prepareForPrinting(QTextDocument& copy, double textWidthPixels);

}  // namespace wendrel::document
