#include "DocumentSamples.h"
#include "DocxTestPackages.h"
#include "support/TestEnvironment.h"

#include <QTemporaryDir>
#include <QTextDocument>

#include <gtest/gtest.h>

namespace wendrel::test {

namespace {

// Styles as other writers name them: a heading by its name under a foreign id, one by
// inheritance, one by outline level; character styles for strong and code text; a paragraph
// style that numbers its paragraphs.
const QByteArray styles = R"(<?xml version="1.0"?>
<w:styles xmlns:w="http://schemas.openxmlformats.org/wordprocessingml/2006/main">
 <w:docDefaults><w:rPrDefault><w:rPr><w:rFonts w:ascii="Calibri"/></w:rPr></w:rPrDefault></w:docDefaults>
 <w:style w:type="paragraph" w:default="1" w:styleId="Standard"><w:name w:val="Normal"/></w:style>
 <w:style w:type="paragraph" w:styleId="Titre1"><w:name w:val="heading 1"/><w:basedOn w:val="Standard"/></w:style>
 <w:style w:type="paragraph" w:styleId="Chapter"><w:name w:val="Chapter"/><w:basedOn w:val="Titre1"/></w:style>
 <w:style w:type="paragraph" w:styleId="Deep"><w:name w:val="Deep"/><w:pPr><w:outlineLvl w:val="2"/></w:pPr></w:style>
 <w:style w:type="paragraph" w:styleId="Title"><w:name w:val="Title"/></w:style>
 <w:style w:type="paragraph" w:styleId="Quote"><w:name w:val="Quote"/><w:rPr><w:i/></w:rPr></w:style>
 <w:style w:type="paragraph" w:styleId="Bulleted"><w:name w:val="List Bullet"/><w:pPr><w:numPr><w:numId w:val="1"/></w:numPr></w:pPr></w:style>
 <w:style w:type="paragraph" w:styleId="Loop1"><w:name w:val="Loop1"/><w:basedOn w:val="Loop2"/></w:style>
 <w:style w:type="paragraph" w:styleId="Loop2"><w:name w:val="Loop2"/><w:basedOn w:val="Loop1"/></w:style>
 <w:style w:type="character" w:styleId="Strong"><w:name w:val="Strong"/><w:rPr><w:b/></w:rPr></w:style>
 <w:style w:type="character" w:styleId="CodeChar"><w:name w:val="Code Char"/><w:rPr><w:rFonts w:ascii="Consolas" w:hAnsi="Consolas"/></w:rPr></w:style>
</w:styles>)";

// Numbering 1 bullets, 2 and 3 count (3 is a separate list of the same kind), 4 counts
// through a numbering style's link.
const QByteArray numbering = R"(<?xml version="1.0"?>
<w:numbering xmlns:w="http://schemas.openxmlformats.org/wordprocessingml/2006/main">
 <w:abstractNum w:abstractNumId="10">
  <w:lvl w:ilvl="0"><w:numFmt w:val="bullet"/></w:lvl><w:lvl w:ilvl="1"><w:numFmt w:val="bullet"/></w:lvl>
 </w:abstractNum>
 <w:abstractNum w:abstractNumId="11">
  <w:lvl w:ilvl="0"><w:numFmt w:val="decimal"/></w:lvl><w:lvl w:ilvl="1"><w:numFmt w:val="lowerLetter"/></w:lvl>
 </w:abstractNum>
 <w:num w:numId="1"><w:abstractNumId w:val="10"/></w:num>
 <w:num w:numId="2"><w:abstractNumId w:val="11"/></w:num>
 <w:num w:numId="3"><w:abstractNumId w:val="11"/></w:num>
 <w:num w:numId="5"><w:abstractNumId w:val="10"/><w:lvlOverride w:ilvl="0"><w:lvl w:ilvl="0"><w:numFmt w:val="upperRoman"/></w:lvl></w:lvlOverride></w:num>
</w:numbering>)";

const QByteArray relationships = R"(<?xml version="1.0"?>
<Relationships xmlns="http://schemas.openxmlformats.org/package/2006/relationships">
 <Relationship Id="rIdS" Type="http://schemas.openxmlformats.org/officeDocument/2006/relationships/styles" Target="styles.xml"/>
 <Relationship Id="rIdN" Type="http://schemas.openxmlformats.org/officeDocument/2006/relationships/numbering" Target="/word/numbering.xml"/>
 <Relationship Id="rIdL" Type="http://schemas.openxmlformats.org/officeDocument/2006/relationships/hyperlink" Target="https://example.com/x?a=1&amp;b=2" TargetMode="External"/>
 <Relationship Id="rIdP" Type="http://schemas.openxmlformats.org/officeDocument/2006/relationships/image" Target="media/red%20box.png"/>
 <Relationship Id="rIdU" Type="http://schemas.openxmlformats.org/officeDocument/2006/relationships/image" Target="../word/media/missing.png"/>
</Relationships>)";

QString paragraph(const QString& properties, const QString& runs)
{
    return QStringLiteral("<w:p><w:pPr>%1</w:pPr>%2</w:p>").arg(properties, runs);
}

QString run(const QString& text, const QString& properties = {})
{
    return QStringLiteral("<w:r><w:rPr>%1</w:rPr><w:t xml:space=\"preserve\">%2</w:t></w:r>").arg(properties, text);
}

QString listItem(int numId, int level, const QString& text)
{
    return paragraph(QStringLiteral("<w:numPr><w:ilvl w:val=\"%1\"/><w:numId w:val=\"%2\"/></w:numPr>").arg(level).arg(numId),
                     run(text));
}

QString cell(const QString& properties, const QString& text)
{
    return QStringLiteral("<w:tc><w:tcPr>%1</w:tcPr>%2</w:tc>").arg(properties, paragraph({}, run(text)));
}

const QString drawing = QStringLiteral(
    "<w:r><w:drawing><wp:inline><wp:extent cx=\"381000\" cy=\"190500\"/><wp:docPr id=\"1\" name=\"p\"/>"
    "<a:graphic><a:graphicData><pic:pic><pic:blipFill><a:blip r:embed=\"rIdP\"/></pic:blipFill></pic:pic>"
    "</a:graphicData></a:graphic></wp:inline></w:drawing></w:r>");

struct ReaderCase {
    const char* name;
    QString body;
    const char* structure;
};

const ReaderCase readerCases[] = {
    {"HeadingsByNameInheritanceOutlineAndTitle",
     paragraph(QStringLiteral("<w:pStyle w:val=\"Titre1\"/>"), run(QStringLiteral("Named")))
         + paragraph(QStringLiteral("<w:pStyle w:val=\"Chapter\"/>"), run(QStringLiteral("Inherited")))
         + paragraph(QStringLiteral("<w:pStyle w:val=\"Deep\"/>"), run(QStringLiteral("Outline")))
         + paragraph(QStringLiteral("<w:outlineLvl w:val=\"1\"/>"), run(QStringLiteral("Direct")))
         + paragraph(QStringLiteral("<w:pStyle w:val=\"Title\"/>"), run(QStringLiteral("Title")))
         + paragraph(QStringLiteral("<w:pStyle w:val=\"Loop1\"/>"), run(QStringLiteral("Looping styles"))),
     "h1 Named\nh1 Inherited\nh3 Outline\nh2 Direct\nh1 Title\np Looping styles"},
    {"ToggledRunProperties",
     paragraph({}, run(QStringLiteral("b"), QStringLiteral("<w:b/>"))
                       + run(QStringLiteral("off"), QStringLiteral("<w:b w:val=\"0\"/><w:i w:val=\"false\"/>"))
                       + run(QStringLiteral("s"), QStringLiteral("<w:rStyle w:val=\"Strong\"/>"))
                       + run(QStringLiteral("x"), QStringLiteral("<w:rStyle w:val=\"Strong\"/><w:b w:val=\"off\"/>"))
                       + run(QStringLiteral("u"), QStringLiteral("<w:u w:val=\"single\"/>"))
                       + run(QStringLiteral("n"), QStringLiteral("<w:u w:val=\"none\"/>"))
                       + run(QStringLiteral("d"), QStringLiteral("<w:dstrike/>"))
                       + run(QStringLiteral("c"), QStringLiteral("<w:rFonts w:ascii=\"Courier New\"/>"))
                       + run(QStringLiteral("k"), QStringLiteral("<w:rStyle w:val=\"CodeChar\"/>"))
                       + run(QStringLiteral("hidden"), QStringLiteral("<w:vanish/>")))
         + paragraph(QStringLiteral("<w:pStyle w:val=\"Quote\"/><w:rPr><w:b/></w:rPr>"),
                     run(QStringLiteral("quoted ")) + run(QStringLiteral("upright"), QStringLiteral("<w:i w:val=\"0\"/>"))),
     "p **b**off**s**x_u_n~~d~~`ck`\np *quoted *upright"},
    {"TabsBreaksAndRevisions",
     paragraph({}, QStringLiteral("<w:r><w:t>a</w:t><w:tab/><w:t>b</w:t><w:br/><w:t>c</w:t><w:br w:type=\"page\"/>"
                                  "<w:t>d</w:t><w:noBreakHyphen/><w:t>e</w:t></w:r>"
                                  "<w:del><w:r><w:delText>gone</w:delText></w:r></w:del>"
                                  "<w:ins><w:r><w:t> kept</w:t></w:r></w:ins>"
                                  "<w:moveFrom><w:r><w:t> moved away</w:t></w:r></w:moveFrom>")),
     "p a b⏎cd-e kept"},
    {"LinksByRelationshipAnchorAndFields",
     paragraph({}, QStringLiteral("<w:hyperlink r:id=\"rIdL\"><w:r><w:t>rel</w:t></w:r></w:hyperlink>"
                                  "<w:r><w:t xml:space=\"preserve\"> </w:t></w:r>"
                                  "<w:hyperlink w:anchor=\"top\"><w:r><w:t>anchor</w:t></w:r></w:hyperlink>"
                                  "<w:fldSimple w:instr=\" HYPERLINK &quot;https://simple.example/&quot; \"><w:r><w:t>simple</w:t></w:r></w:fldSimple>"
                                  "<w:r><w:fldChar w:fldCharType=\"begin\"/></w:r>"
                                  "<w:r><w:instrText xml:space=\"preserve\"> HYPERLINK \\l \"part\" \\o \"tip\" </w:instrText></w:r>"
                                  "<w:r><w:fldChar w:fldCharType=\"separate\"/></w:r><w:r><w:t>field</w:t></w:r>"
                                  "<w:r><w:fldChar w:fldCharType=\"end\"/></w:r>"
                                  "<w:r><w:fldChar w:fldCharType=\"begin\"/></w:r><w:r><w:instrText>PAGE</w:instrText></w:r>"
                                  "<w:r><w:fldChar w:fldCharType=\"separate\"/></w:r><w:r><w:t>7</w:t></w:r>"
                                  "<w:r><w:fldChar w:fldCharType=\"end\"/></w:r>")),
     "p [rel](https://example.com/x?a=1&b=2) [anchor](#top)[simple](https://simple.example/)[field](#part)7"},
    {"AlternativesReadOnce",
     paragraph({}, QStringLiteral("<mc:AlternateContent><mc:Choice Requires=\"wps\"><w:r><w:t>chosen</w:t></w:r></mc:Choice>"
                                  "<mc:Fallback><w:r><w:t>fallback</w:t></w:r></mc:Fallback></mc:AlternateContent>")),
     "p chosen"},
    {"ListsByNumberingAndStyle",
     listItem(1, 0, QStringLiteral("one")) + listItem(1, 0, QStringLiteral("two"))
         + listItem(2, 1, QStringLiteral("two.a")) + listItem(2, 1, QStringLiteral("two.b"))
         + listItem(1, 0, QStringLiteral("three"))
         + paragraph(QStringLiteral("<w:pStyle w:val=\"Bulleted\"/>"), run(QStringLiteral("styled")))
         + paragraph(QStringLiteral("<w:pStyle w:val=\"Bulleted\"/><w:numPr><w:numId w:val=\"0\"/></w:numPr>"), run(QStringLiteral("unnumbered")))
         + listItem(3, 0, QStringLiteral("counted")) + listItem(5, 0, QStringLiteral("roman"))
         + listItem(99, 0, QStringLiteral("unknown numbering")),
     "ul1 one\nul1 two\nol2 two.a\nol2 two.b\nul1 three\nul1 styled\np unnumbered\nol1 counted\nol1 roman\np unknown numbering"},
    {"TableWithSpansHeaderAndNesting",
     QStringLiteral("<w:tbl><w:tblPr/><w:tblGrid><w:gridCol/><w:gridCol/><w:gridCol/></w:tblGrid>"
                    "<w:tr><w:trPr><w:tblHeader/></w:trPr>%1%2</w:tr>"
                    "<w:tr><w:trPr><w:tblHeader w:val=\"0\"/></w:trPr>%3%4%5</w:tr>"
                    "<w:tr>%6%7%8</w:tr></w:tbl>")
         .arg(cell(QStringLiteral("<w:gridSpan w:val=\"2\"/>"), QStringLiteral("wide")), cell({}, QStringLiteral("B")),
              cell(QStringLiteral("<w:vMerge w:val=\"restart\"/>"), QStringLiteral("tall")), cell({}, QStringLiteral("D")),
              cell({}, QStringLiteral("E")), QStringLiteral("<w:tc><w:tcPr><w:vMerge/></w:tcPr><w:p/></w:tc>"),
              QStringLiteral("<w:tc><w:p><w:r><w:t>outer</w:t></w:r></w:p><w:tbl><w:tr>%1</w:tr></w:tbl><w:p/></w:tc>")
                  .arg(cell({}, QStringLiteral("inner"))),
              cell({}, QStringLiteral("G"))),
     "table 3x3 header 1\ncell 0,0 p wide\ncell 0,2 p B\ncell 1,0 p tall\ncell 1,1 p D\ncell 1,2 p E\n"
     "cell 2,1 p outer\ntable 1x1 header 0\ncell 0,0 p inner\ncell 2,2 p G"},
    {"DrawingAndVmlPictures",
     paragraph({}, drawing + run(QStringLiteral(" and ")))
         + paragraph({}, QStringLiteral("<w:r><w:pict><v:shape style=\"width:0.5in;height:20px\"><v:imagedata r:id=\"rIdP\"/>"
                                        "</v:shape></w:pict></w:r><w:r><w:drawing><wp:inline><a:blip r:embed=\"rIdU\"/>"
                                        "</wp:inline></w:drawing></w:r>")),
     "picture 40x20\np [picture] and\npicture 40x20\np [picture]"},
    {"TextBoxParagraphsJoinTheirParagraph",
     paragraph({}, run(QStringLiteral("Before ")) + QStringLiteral("<w:r><w:pict><v:shape><v:textbox><w:txbxContent>")
                       + paragraph({}, run(QStringLiteral("boxed"))) + paragraph({}, run(QStringLiteral("twice")))
                       + QStringLiteral("</w:txbxContent></v:textbox></v:shape></w:pict></w:r>") + run(QStringLiteral("after"))),
     "p Before boxed⏎twice⏎after"},
};

class DocxReaderTest : public ::testing::TestWithParam<ReaderCase> {
protected:
    QTemporaryDir folder;
};

TEST_P(DocxReaderTest, ReadsWhatOtherWritersWrite)
{
    const QString path = folder.filePath(QStringLiteral("in.docx"));
    writeFile(path, docxPackage({{QStringLiteral("word/document.xml"), documentXml(GetParam().body)},
                                  {QStringLiteral("word/styles.xml"), styles},
                                  {QStringLiteral("word/numbering.xml"), numbering},
                                  {QStringLiteral("word/_rels/document.xml.rels"), relationships},
                                  {QStringLiteral("word/media/red box.png"), samplePng()}}));
    const ReadResult read = readDocxFile(path);
    ASSERT_TRUE(read.document) << read.error.toStdString();
    EXPECT_EQ(structureOf(*read.document).toStdString(), GetParam().structure);
}

INSTANTIATE_TEST_SUITE_P(Cases, DocxReaderTest, ::testing::ValuesIn(readerCases),
                         [](const auto& testCase) { return std::string(testCase.param.name); });

TEST(DocxReaderSizes, DrawingExtentAndVmlStyleGivePoints)
{
    QTemporaryDir folder;
    const QString path = folder.filePath(QStringLiteral("in.docx"));
    writeFile(path, docxPackage({{QStringLiteral("word/document.xml"), documentXml(readerCases[7].body)},
                                  {QStringLiteral("word/_rels/document.xml.rels"), relationships},
                                  {QStringLiteral("word/media/red box.png"), samplePng()}}));
    const ReadResult read = readDocxFile(path);
    ASSERT_TRUE(read.document) << read.error.toStdString();
    EXPECT_EQ(pictureSizes(*read.document), (QList<QSizeF>{{30, 15}, {36, 15}}));
}

}  // namespace

}  // namespace wendrel::test
