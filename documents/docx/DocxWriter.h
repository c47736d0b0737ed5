#pragma once

class QIODevice;
class QTextDocument;

namespace wendrel {

// Writes `document` as a Word document (WordprocessingML in a ZIP package) into `output`, an
// open, seekable device: fixed styles (Normal, headings, list paragraph, links, a bordered
// table), bullet and decimal numbering, and the generated body with its pictures. Throws
// OperationError when the device can't be written.
void writeDocx(const QTextDocument& document, QIODevice& output);

}  // namespace wendrel
