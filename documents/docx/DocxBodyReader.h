#pragma once

#include "DocxContent.h"
#include "DocxPackage.h"

#include <QByteArray>
#include <QString>

#include <vector>

namespace wendrel::docx {

class Numbering;
class StyleSheet;

// Bounds that keep a hostile body from taking unbounded memory or stack.
inline constexpr int deepestTableNesting = 64;
inline constexpr int widestTable = 1000;             // grid columns
inline constexpr qint64 mostBlocks = 1'000'000;      // paragraphs and table cells together
inline constexpr int mostPictures = 10'000;          // placed, the same picture counted each time

// Reads the body of a main document part: paragraphs with their heading level, list placement
// and styled runs, tables with spans and heading rows, pictures by the part they show, links
// from w:hyperlink and HYPERLINK fields. Elements it doesn't know are passed through, their
// text kept; deleted revisions and field instructions are left out. Throws OperationError for
// a malformed part, a DTD, or a body past the bounds above.
std::vector<ContentBlock> readBody(const QByteArray& xml, const QString& partName, const StyleSheet& styles,
                                   const Numbering& numbering, const Relationships& relationships);

// The target of a field instruction "HYPERLINK "url"" or "HYPERLINK \l "anchor"" ("#anchor");
// empty for other fields.
QString hyperlinkOfField(const QString& instruction);

// Width and height in points from a VML style ("width:72pt;height:1in"); 0 when unstated.
std::pair<double, double> sizeOfVmlStyle(const QString& style);

}  // namespace wendrel::docx
