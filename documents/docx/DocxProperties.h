#pragma once

#include "documents/model/DocumentModel.h"

#include <QString>

#include <optional>

namespace wendrel::docx {

class PartReader;

// Run properties as one level of styling states them: unset ones are inherited.
struct RunProperties {
    std::optional<bool> bold;
    std::optional<bool> italic;
    std::optional<bool> underline;
    std::optional<bool> strike;
    std::optional<bool> code;    // set by a monospace font
    std::optional<bool> hidden;
    QString style;               // the character style named by w:rStyle (direct properties only)

    // `over` wins where it says anything.
    void overlay(const RunProperties& over);
    document::InlineStyle inlineStyle() const;
};

// Numbering as a paragraph or its style states it: w:numId 0 takes numbering away.
struct NumberingReference {
    std::optional<int> numberingId;
    std::optional<int> level;  // w:ilvl, 0 outermost
};

struct ParagraphProperties {
    QString style;
    NumberingReference numbering;
    std::optional<int> outlineLevel;  // 0-8; 9 or absent: body text
};

// Reads a w:rPr whose start is the current token, through its end. Revisions (w:rPrChange)
// are passed over: they hold what the run looked like before.
RunProperties readRunProperties(PartReader& reader);

// Reads a w:pPr through its end; the paragraph mark's own w:rPr and revisions are passed over.
ParagraphProperties readParagraphProperties(PartReader& reader);

// Whether text in this font is monospace, told by the names of the common fixed-pitch faces.
bool isMonospaceFont(const QString& family);

}  // namespace wendrel::docx
