#pragma once

class QPDF;

namespace wendrel {

// Qt's PDF writer maps each embedded glyph back to the lowest code point the font draws with
// it, and fonts draw the tab and the space with one glyph: every space would read back as a
// tab, which text extraction drops, running "1 / 3" together. This maps such glyphs back to
// the space in every font's /ToUnicode map of `pdf`.
void mapTabGlyphsToSpaces(QPDF& pdf);

}  // namespace wendrel
