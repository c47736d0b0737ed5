#include "DocumentSamples.h"

#include "documents/model/DocumentModel.h"
#include "documents/odt/OdtReader.h"
#include "documents/odt/OdtWriter.h"
#include "documents/zip/ZipWriter.h"
#include "operations/OperationError.h"
#include "support/TestEnvironment.h"
#include "support/ToolRun.h"

#include <QDateTime>
#include <QFile>
#include <QTemporaryDir>
#include <QTextCursor>
#include <QTextDocument>
#include <QTextTable>
#include <QUrl>

#include <gtest/gtest.h>

#include <utility>
#include <vector>

namespace wendrel::test {

namespace {

const char* const contentStart =
    "<?xml version=\"1.0\" encoding=\"UTF-8\"?>"
    "<office:document-content xmlns:office=\"urn:oasis:names:tc:opendocument:xmlns:office:1.0\""
    " xmlns:style=\"urn:oasis:names:tc:opendocument:xmlns:style:1.0\""
    " xmlns:text=\"urn:oasis:names:tc:opendocument:xmlns:text:1.0\""
    " xmlns:table=\"urn:oasis:names:tc:opendocument:xmlns:table:1.0\""
    " xmlns:draw=\"urn:oasis:names:tc:opendocument:xmlns:drawing:1.0\""
    " xmlns:fo=\"urn:oasis:names:tc:opendocument:xmlns:xsl-fo-compatible:1.0\""
    " xmlns:svg=\"urn:oasis:names:tc:opendocument:xmlns:svg-compatible:1.0\""
    " xmlns:xlink=\"http://www.w3.org/1999/xlink\">";

// content.xml with `automaticStyles` and `body` (the children of office:text).
QByteArray content(const QByteArray& body, const QByteArray& automaticStyles = {})
{
    return QByteArray(contentStart) + "<office:automatic-styles>" + automaticStyles
           + "</office:automatic-styles><office:body><office:text>" + body
           + "</office:text></office:body></office:document-content>";
}

// An OpenDocument package of the given parts, the mimetype first.
QString writePackage(const QString& path, const std::vector<std::pair<QString, QByteArray>>& parts,
                     const QByteArray& mimeType = "application/vnd.oasis.opendocument.text")
{
    QFile file(path);
    EXPECT_TRUE(file.open(QIODevice::WriteOnly));
    ZipWriter zip(file);
    const QDateTime now = QDateTime::currentDateTime();
    if (!mimeType.isEmpty())
        zip.addEntry(QStringLiteral("mimetype"), mimeType, ZipWriter::Compression::store, now);
    for (const auto& [name, bytes] : parts)
        zip.addEntry(name, bytes, ZipWriter::Compression::deflateWhenSmaller, now);
    zip.finish();
    return path;
}

QString readError(const QString& path)
{
    try {
        document::readOdt(path);
    } catch (const OperationError& error) {
        return error.message();
    }
    return QStringLiteral("(read)");
}

class OdtTest : public ::testing::Test {
protected:
    void SetUp() override { ASSERT_TRUE(m_folder.isValid()); }
    QString path(const QString& name) const { return m_folder.filePath(name); }

    QString odtOf(const QByteArray& body, const QByteArray& automaticStyles = {}, const QByteArray& styles = {})
    {
        std::vector<std::pair<QString, QByteArray>> parts{{QStringLiteral("content.xml"), content(body, automaticStyles)}};
        if (!styles.isEmpty())
            parts.emplace_back(QStringLiteral("styles.xml"), styles);
        return writePackage(path(QStringLiteral("case%1.odt").arg(++m_count)), parts);
    }

    QTemporaryDir m_folder;
    int m_count = 0;
};

}  // namespace

TEST_F(OdtTest, RoundTripKeepsTheSampleStructure)
{
    const auto sample = richSampleDocument();
    const QString odt = path(QStringLiteral("sample.odt"));
    document::writeOdt(*sample, odt);
    EXPECT_EQ(structureOf(*document::readOdt(odt)), structureOf(*sample));

    // The package as the format has it: "mimetype" first and stored, every part well formed.
    const ToolRun check = runPython(QStringLiteral(
        "import sys, zipfile, xml.dom.minidom as m\n"
        "z = zipfile.ZipFile(sys.argv[1]); i = z.infolist()\n"
        "assert i[0].filename == 'mimetype' and i[0].compress_type == 0 and not i[0].extra\n"
        "assert z.read('mimetype') == b'application/vnd.oasis.opendocument.text'\n"
        "for n in ('content.xml', 'styles.xml', 'meta.xml', 'META-INF/manifest.xml'): m.parseString(z.read(n))\n"
        "print(sorted(n for n in z.namelist() if n.startswith('Pictures/')))\n"), {odt});
    EXPECT_EQ(check.output.trimmed(), QStringLiteral("['Pictures/1.png']")) << check.errors.toStdString();
}

TEST_F(OdtTest, RoundTripShapes)
{
    const struct {
        const char* markdown;  // made into a document by Qt's reader
        const char* structure;
    } cases[] = {
        {"# 1\n## 2\n### 3\n#### 4\n##### 5\n###### 6\n", "h1 1\nh2 2\nh3 3\nh4 4\nh5 5\nh6 6"},
        {"1. a\n   1. b\n      - c\n- d\n", "ol1 a\nol2 b\nul3 c\nul1 d"},
    };
    for (const auto& c : cases) {
        QTextDocument document;
        document.setMarkdown(QString::fromUtf8(c.markdown));
        const QString odt = path(QStringLiteral("shape.odt"));
        document::writeOdt(document, odt);
        EXPECT_EQ(structureOf(*document::readOdt(odt)), QString::fromUtf8(c.structure)) << c.markdown;
    }

    // Spaces, tabs and spans, which the text's XML must not collapse; styles together.
    QTextDocument document;
    QTextCursor cursor(&document);
    cursor.insertText(QStringLiteral("  two leading,  two inside,\tone tab, trailing "));
    cursor.insertBlock();
    cursor.insertText(QStringLiteral("all"), document::charFormat({.bold = true, .italic = true, .underline = true,
                                                                   .strike = true, .code = true}));
    cursor.insertBlock();
    QTextTable* table = cursor.insertTable(2, 3);
    table->cellAt(0, 0).firstCursorPosition().insertText(QStringLiteral("wide"));
    table->cellAt(1, 0).firstCursorPosition().insertText(QStringLiteral("tall"));
    table->cellAt(1, 2).firstCursorPosition().insertText(QStringLiteral("nested"));
    table->mergeCells(0, 0, 1, 2);
    table->mergeCells(0, 2, 2, 1);
    const QString odt = path(QStringLiteral("spaces.odt"));
    document::writeOdt(document, odt);
    const auto read = document::readOdt(odt);
    EXPECT_EQ(read->begin().text(), QStringLiteral("  two leading,  two inside,\tone tab, trailing "));
    EXPECT_EQ(structureOf(*read), QStringLiteral("p two leading, two inside, one tab, trailing\n"
                                                 "p ***_~~`all`~~_***\n"
                                                 "table 3x2 header 0\ncell 0,0 p wide\ncell 0,2 p nested\ncell 1,0 p tall"));
    EXPECT_EQ(structureOf(*read), structureOf(document));
    const auto* readTable = qobject_cast<QTextTable*>(read->rootFrame()->childFrames().value(0));
    ASSERT_NE(readTable, nullptr);
    EXPECT_EQ(readTable->cellAt(0, 0).columnSpan(), 2);
    EXPECT_EQ(readTable->cellAt(0, 2).rowSpan(), 2);
}

TEST_F(OdtTest, ReaderFollowsStylesAndMarkup)
{
    const QByteArray namedStyles =
        "<office:document-styles xmlns:office=\"urn:oasis:names:tc:opendocument:xmlns:office:1.0\""
        " xmlns:style=\"urn:oasis:names:tc:opendocument:xmlns:style:1.0\""
        " xmlns:text=\"urn:oasis:names:tc:opendocument:xmlns:text:1.0\""
        " xmlns:fo=\"urn:oasis:names:tc:opendocument:xmlns:xsl-fo-compatible:1.0\""
        " xmlns:svg=\"urn:oasis:names:tc:opendocument:xmlns:svg-compatible:1.0\">"
        "<office:font-face-decls><style:font-face style:name=\"Code Face\" svg:font-family=\"Cousine\" style:font-pitch=\"fixed\"/>"
        "</office:font-face-decls><office:styles>"
        "<style:style style:name=\"Heading_20_3\" style:display-name=\"Heading 3\" style:family=\"paragraph\"/>"
        "<style:style style:name=\"Strong\" style:family=\"text\"><style:text-properties fo:font-weight=\"bold\"/></style:style>"
        "<style:style style:name=\"Emphatic\" style:family=\"text\" style:parent-style-name=\"Strong\">"
        "<style:text-properties fo:font-style=\"italic\"/></style:style>"
        "<text:list-style style:name=\"Numbers\"><text:list-level-style-number text:level=\"1\" style:num-format=\"1\"/>"
        "<text:list-level-style-bullet text:level=\"2\" text:bullet-char=\"-\"/></text:list-style>"
        "</office:styles></office:document-styles>";
    const QByteArray automatic =
        "<style:style style:name=\"P1\" style:family=\"paragraph\" style:parent-style-name=\"Heading_20_3\"/>"
        "<style:style style:name=\"P2\" style:family=\"paragraph\"><style:text-properties fo:font-weight=\"700\"/></style:style>"
        "<style:style style:name=\"T1\" style:family=\"text\"><style:text-properties style:font-name=\"Code Face\"/></style:style>"
        "<style:style style:name=\"T2\" style:family=\"text\"><style:text-properties fo:font-weight=\"normal\""
        " style:text-underline-style=\"solid\" style:text-line-through-style=\"none\"/></style:style>"
        "<style:style style:name=\"T3\" style:family=\"text\" style:parent-style-name=\"Emphatic\"/>";
    const struct {
        const char* body;
        const char* structure;
    } cases[] = {
        {"<text:h>no level</text:h><text:h text:outline-level=\"9\">deep</text:h><text:p text:style-name=\"P1\">styled</text:p>",
         "h1 no level\nh6 deep\nh3 styled"},
        {"<text:p text:style-name=\"P2\">bold<text:span text:style-name=\"T2\">under</text:span></text:p>"
         "<text:p><text:span text:style-name=\"T3\">both</text:span><text:span text:style-name=\"T1\">mono</text:span></text:p>",
         "p **bold**_under_\np ***both***`mono`"},
        {"<text:p>  collapsed \n   white<text:s text:c=\"2\"/>kept<text:tab/>tab<text:line-break/>next"
         "<text:soft-page-break/> <text:a xlink:href=\"https://e.org\">link</text:a></text:p>",
         "p collapsed white kept tab⏎next [link](https://e.org)"},
        {"<text:list text:style-name=\"Numbers\"><text:list-item><text:p>one</text:p><text:p>more</text:p>"
         "<text:list><text:list-item><text:p>sub</text:p></text:list-item></text:list></text:list-item>"
         "<text:list-item><text:p>two</text:p></text:list-item></text:list><text:list><text:list-item>"
         "<text:p>unstyled</text:p></text:list-item></text:list>",
         "ol1 one⏎more\nul2 sub\nol1 two\nul1 unstyled"},
        {"<table:table><table:table-column table:number-columns-repeated=\"2\"/><table:table-header-rows><table:table-row>"
         "<table:table-cell table:number-columns-spanned=\"2\"><text:p>head</text:p></table:table-cell>"
         "<table:covered-table-cell/></table:table-row></table:table-header-rows><table:table-row><table:table-cell>"
         "<table:table><table:table-row><table:table-cell><text:p>inner</text:p></table:table-cell></table:table-row>"
         "</table:table></table:table-cell><table:table-cell><text:p>b</text:p></table:table-cell><table:table-cell>"
         "<text:p>grows</text:p></table:table-cell></table:table-row></table:table><text:p>after</text:p>",
         "table 3x2 header 1\ncell 0,0 p head\ntable 1x1 header 0\ncell 0,0 p inner\ncell 1,1 p b\ncell 1,2 p grows\np after"},
        {"<text:section><text:p>in a section</text:p></text:section><office:forms/><text:p>a<text:note><text:note-citation>1"
         "</text:note-citation><text:note-body><text:p>note</text:p></text:note-body></text:note></text:p>",
         "p in a section\np a1"},
    };
    for (const auto& c : cases) {
        const QString odt = odtOf(c.body, automatic, namedStyles);
        EXPECT_EQ(structureOf(*document::readOdt(odt)), QString::fromUtf8(c.structure)) << c.body;
    }
}

TEST_F(OdtTest, PicturesComeFromThePackageOnly)
{
    writeFile(path(QStringLiteral("outside.png")), samplePng());
    const QByteArray body =
        "<text:p>a<draw:frame svg:width=\"2.54cm\" svg:height=\"0.5in\"><draw:image xlink:href=\"Pictures/x.png\"/>"
        "</draw:frame><draw:frame><draw:image xlink:href=\"../outside.png\"/></draw:frame>"
        "<draw:frame><draw:image xlink:href=\"" + QUrl::fromLocalFile(path(QStringLiteral("outside.png"))).toEncoded()
        + "\"/></draw:frame><draw:frame><draw:image xlink:href=\"Pictures/missing.png\"/></draw:frame>"
          "<draw:frame><draw:image xlink:href=\"Pictures/x.svg\"/><draw:image xlink:href=\"Pictures/x.png\"/></draw:frame>"
          "<draw:frame><draw:image><office:binary-data>" + samplePng().toBase64() + "</office:binary-data></draw:image>"
          "</draw:frame>b</text:p>";
    const QString odt = writePackage(path(QStringLiteral("pictures.odt")),
                                     {{QStringLiteral("content.xml"), content(body)},
                                      {QStringLiteral("Pictures/x.png"), samplePng()},
                                      {QStringLiteral("Pictures/x.svg"), "<svg xmlns='http://www.w3.org/2000/svg'/>"}});
    const auto document = document::readOdt(odt);
    EXPECT_EQ(structureOf(*document),
              QStringLiteral("picture 40x20\npicture 40x20\npicture 40x20\np a[picture][picture][picture]b"));
    const QList<QSizeF> sizes = pictureSizes(*document);
    ASSERT_EQ(sizes.size(), 3);
    EXPECT_NEAR(sizes[0].width(), 72.0, 0.01);
    EXPECT_NEAR(sizes[0].height(), 36.0, 0.01);
}

// Whatever a file holds, reading it ends with a document or a clear error, soon, and in
// bounded memory.
TEST_F(OdtTest, HostileAndBrokenFilesAreRefused)
{
    const QByteArray laughs = "<?xml version=\"1.0\"?><!DOCTYPE d [<!ENTITY a \"aaaaaaaaaa\"><!ENTITY b \"&a;&a;&a;&a;&a;\">]>";
    QByteArray deep;
    for (int i = 0; i < 5000; ++i)
        deep = "<text:span>" + deep + "</text:span>";
    QByteArray hugeTable = "<table:table><table:table-column table:number-columns-repeated=\"100000\"/>";
    for (int i = 0; i < 2000; ++i)
        hugeTable += "<table:table-row table:number-rows-repeated=\"100000\"><table:table-cell/></table:table-row>";
    hugeTable += "</table:table>";

    writeFile(path(QStringLiteral("text.odt")), "just text, no archive");
    const struct {
        QString file;
        const char* error;
    } cases[] = {
        {path(QStringLiteral("text.odt")), "Not a ZIP archive"},
        {path(QStringLiteral("nothing-here.odt")), "Couldn't read the document"},
        {writePackage(path(QStringLiteral("dtd.odt")),
                      {{QStringLiteral("content.xml"), laughs + content("<text:p>&b;</text:p>").mid(38)}}),
         "The document holds a DTD, which isn't allowed"},
        {writePackage(path(QStringLiteral("huge.odt")),
                      {{QStringLiteral("content.xml"), content(QByteArray(65 * 1024 * 1024, ' '))}}),
         "too large"},
        {odtOf("<text:p>" + deep + "deep</text:p>"), "The document is too large or too deeply nested"},
        {odtOf(hugeTable), "The document is too large or too deeply nested"},
        {odtOf("<text:p>unclosed"), "The document is damaged"},
        {writePackage(path(QStringLiteral("sheet.ods")), {{QStringLiteral("content.xml"), content("")}},
                      "application/vnd.oasis.opendocument.spreadsheet"),
         "The file isn't an OpenDocument text"},
        {writePackage(path(QStringLiteral("empty.odt")), {{QStringLiteral("styles.xml"), "<x/>"}}),
         "The file isn't an OpenDocument text"},
    };
    for (const auto& c : cases) {
        const QString error = readError(c.file);
        EXPECT_TRUE(error.contains(QString::fromUtf8(c.error))) << c.error << " / " << error.toStdString();
    }
}

}  // namespace wendrel::test
