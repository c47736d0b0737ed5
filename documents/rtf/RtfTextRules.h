#pragma once

#include <QString>
#include <QStringView>

#include <optional>

namespace wendrel::rtf {

// Small readings of text the RTF reader needs, apart from the reader so they can be tested.

// The target of a HYPERLINK field instruction ("HYPERLINK \"url\" \\l \"anchor\""), empty for
// any other field.
QString hyperlinkTarget(QStringView instruction);

// Whether a font table name is a fixed-pitch font, the mark of code.
bool isMonospaceFontName(QStringView name);

// 1-6 for a style named "heading 1" to "heading 6" (any case), else 0.
int headingLevelOfStyleName(QStringView name);

// A typed list marker at a paragraph's start: "•" or "1." and a tab, as writers that know no
// list tables put it.
struct TypedListMarker {
    bool ordered = false;
    qsizetype length = 0;  // marker and tab
};
std::optional<TypedListMarker> typedListMarker(QStringView text);

}  // namespace wendrel::rtf
