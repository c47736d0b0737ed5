#include "RtfControlWords.h"

#include <QHash>

namespace wendrel::rtf {

namespace {

QHash<QByteArray, WordMeaning> buildTable()
{
    QHash<QByteArray, WordMeaning> table;
    const auto add = [&](const char* name, Word word) { table.insert(name, {word, 0}); };
    const auto character = [&](const char* name, char16_t c) { table.insert(name, {Word::Character, c}); };

    add("rtf", Word::Rtf);
    add("ansi", Word::Ansi);
    add("mac", Word::Mac);
    add("pc", Word::Pc);
    add("pca", Word::Pca);
    add("ansicpg", Word::AnsiCodePage);
    add("deff", Word::DefaultFont);
    add("uc", Word::UnicodeFallback);
    add("u", Word::Unicode);
    add("bin", Word::Binary);

    add("fonttbl", Word::FontTable);
    add("stylesheet", Word::StyleSheet);
    add("listtable", Word::ListTable);
    add("listoverridetable", Word::ListOverrideTable);
    add("field", Word::Field);
    add("fldinst", Word::FieldInstruction);
    add("fldrslt", Word::FieldResult);
    add("pict", Word::Picture);
    add("shppict", Word::ShapePicture);
    add("nesttableprops", Word::NestedTableProperties);
    add("pn", Word::OldListNumbering);
    // Destinations with no text of the body, skipped whether or not they are marked \*.
    for (const char* name :
         {"colortbl", "info", "header", "headerl", "headerr", "headerf", "footer", "footerl", "footerr", "footerf",
          "footnote", "annotation", "atnid", "atnauthor", "atndate", "atnref", "pntext", "pntxta", "pntxtb",
          "listtext", "nonshppict", "nonesttables", "objdata", "objclass", "xe", "tc", "txe", "rxe", "bkmkstart",
          "bkmkend", "author", "operator", "title", "subject", "keywords", "comment", "doccomm", "company",
          "creatim", "revtim", "printim", "buptim", "template", "rsidtbl", "revtbl", "filetbl", "generator",
          "userprops", "xmlnstbl", "themedata", "colorschememapping", "latentstyles", "datastore", "pgdsctbl",
          "listpicture", "fldtype", "private", "docvar", "shpinst", "background", "listname", "leveltext",
          "levelnumbers", "falt", "panose", "fontemb", "fontfile", "picprop", "blipuid", "mmathPr", "ftnsep",
          "ftnsepc", "ftncn", "aftnsep", "aftnsepc", "aftncn"})
        add(name, Word::SkippedDestination);

    add("f", Word::Font);
    add("fmodern", Word::FontFamilyModern);
    add("fcharset", Word::FontCharset);
    add("cpg", Word::FontCodePage);
    add("fprq", Word::FontPitch);
    add("s", Word::Style);
    add("cs", Word::OtherStyle);
    add("ds", Word::OtherStyle);
    add("ts", Word::OtherStyle);

    add("list", Word::List);
    add("listid", Word::ListId);
    add("listlevel", Word::ListLevel);
    add("levelnfc", Word::LevelNumberFormat);
    add("levelnfcn", Word::LevelNumberFormat);
    add("listoverride", Word::ListOverrideEntry);
    add("ls", Word::ListOverrideNumber);
    add("ilvl", Word::ListLevelNumber);
    add("pnlvl", Word::OldListLevel);
    add("pnlvlblt", Word::OldListBullet);
    add("pnlvlbody", Word::OldListBody);
    for (const char* name : {"pndec", "pnucltr", "pnlcltr", "pnucrm", "pnlcrm", "pnord", "pncard"})
        add(name, Word::OldListNumbered);

    add("b", Word::Bold);
    add("i", Word::Italic);
    for (const char* name : {"ul", "uld", "uldash", "uldashd", "uldashdd", "uldb", "ulhwave", "ulldash", "ulth",
                             "ulthd", "ulthdash", "ulthdashd", "ulthdashdd", "ulthldash", "ululdbwave", "ulw",
                             "ulwave"})
        add(name, Word::Underline);
    add("ulnone", Word::UnderlineNone);
    add("strike", Word::Strike);
    add("striked", Word::DoubleStrike);
    add("plain", Word::Plain);

    add("pard", Word::ParagraphDefaults);
    add("outlinelevel", Word::OutlineLevel);
    add("intbl", Word::InTable);
    add("itap", Word::TableDepth);
    add("li", Word::LeftIndent);
    add("fi", Word::FirstLineIndent);
    add("par", Word::Paragraph);
    add("sect", Word::Section);
    add("line", Word::Line);
    add("tab", Word::Tab);
    add("cell", Word::Cell);
    add("row", Word::Row);
    add("nestcell", Word::NestedCell);
    add("nestrow", Word::NestedRow);

    add("trowd", Word::RowDefaults);
    add("trhdr", Word::RowHeader);
    add("cellx", Word::CellBoundary);
    add("clmgf", Word::CellMergeFirst);
    add("clmrg", Word::CellMerge);
    add("clvmgf", Word::CellVerticalMergeFirst);
    add("clvmrg", Word::CellVerticalMerge);

    add("pngblip", Word::PngBlip);
    add("jpegblip", Word::JpegBlip);
    for (const char* name : {"emfblip", "wmetafile", "macpict", "pmmetafile", "dibitmap", "wbitmap"})
        add(name, Word::OtherBlip);
    add("picwgoal", Word::PictureGoalWidth);
    add("pichgoal", Word::PictureGoalHeight);
    add("picscalex", Word::PictureScaleX);
    add("picscaley", Word::PictureScaleY);

    character("emdash", u'\u2014');
    character("endash", u'\u2013');
    character("bullet", u'\u2022');
    character("lquote", u'\u2018');
    character("rquote", u'\u2019');
    character("ldblquote", u'\u201C');
    character("rdblquote", u'\u201D');
    character("emspace", u'\u2003');
    character("enspace", u'\u2002');
    character("qmspace", u'\u2005');
    character("zwj", u'\u200D');
    character("zwnj", u'\u200C');
    character("ltrmark", u'\u200E');
    character("rtlmark", u'\u200F');
    character("~", u'\u00A0');
    character("_", u'\u2011');
    return table;
}

}  // namespace

WordMeaning meaningOf(QByteArrayView name)
{
    static const QHash<QByteArray, WordMeaning> table = buildTable();
    return table.value(QByteArray::fromRawData(name.data(), name.size()));
}

}  // namespace wendrel::rtf
