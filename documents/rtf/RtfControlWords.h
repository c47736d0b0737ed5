#pragma once

#include <QByteArrayView>

namespace wendrel::rtf {

// The control words the reader acts on. Everything else is ignored, as RTF asks of readers.
enum class Word {
    Unknown,
    // document
    Rtf, Ansi, Mac, Pc, Pca, AnsiCodePage, DefaultFont, UnicodeFallback, Unicode, Binary,
    // destinations
    FontTable, StyleSheet, ListTable, ListOverrideTable, Field, FieldInstruction, FieldResult, Picture,
    ShapePicture, NestedTableProperties, OldListNumbering, SkippedDestination,
    // font and style tables
    Font, FontFamilyModern, FontCharset, FontCodePage, FontPitch, Style, OtherStyle,
    // lists
    List, ListId, ListLevel, LevelNumberFormat, ListOverrideEntry, ListOverrideNumber, ListLevelNumber,
    OldListLevel, OldListBullet, OldListBody, OldListNumbered,
    // characters
    Bold, Italic, Underline, UnderlineNone, Strike, DoubleStrike, Plain,
    // paragraphs
    ParagraphDefaults, OutlineLevel, InTable, TableDepth, LeftIndent, FirstLineIndent,
    Paragraph, Section, Line, Tab, Cell, Row, NestedCell, NestedRow,
    // tables
    RowDefaults, RowHeader, CellBoundary, CellMergeFirst, CellMerge, CellVerticalMergeFirst, CellVerticalMerge,
    // pictures
    PngBlip, JpegBlip, OtherBlip, PictureGoalWidth, PictureGoalHeight, PictureScaleX, PictureScaleY,
    // text
    Character,
};

struct WordMeaning {
    Word word = Word::Unknown;
    char16_t character = 0;  // for Word::Character
};

WordMeaning meaningOf(QByteArrayView name);

}  // namespace wendrel::rtf
