#include "DocumentSamples.h"
#include "DocxTestPackages.h"
#include "support/TestEnvironment.h"
#include "documents/ZipTestTools.h"
#include "documents/docx/DocxReader.h"
#include "documents/model/DocumentModel.h"

#include <QDir>
#include <QTemporaryDir>
#include <QTextCursor>
#include <QTextDocument>
#include <QTextTable>

#include <gtest/gtest.h>

namespace wendrel::test {

namespace {

class DocxRoundTripTest : public ::testing::Test {
protected:
    // Writes `document` with writeDocx and reads it back with readDocx.
    std::unique_ptr<QTextDocument> roundTrip(const QTextDocument& document)
    {
        const QString path = folder.filePath(QStringLiteral("round.docx"));
        writeFile(path, docxBytes(document));
        ReadResult read = readDocxFile(path);
        EXPECT_TRUE(read.error.isEmpty()) << read.error.toStdString();
        return std::move(read.document);
    }

    QTemporaryDir folder;
};

// A table whose cells span rows and columns, with a table inside one of its cells.
std::unique_ptr<QTextDocument> spanningTablesDocument()
{
    auto document = std::make_unique<QTextDocument>();
    QTextCursor cursor(document.get());
    cursor.insertText(QStringLiteral("Before"));
    QTextTableFormat format;
    format.setHeaderRowCount(2);
    QTextTable* table = cursor.insertTable(3, 3, format);
    table->mergeCells(0, 0, 1, 2);  // across two columns
    table->mergeCells(1, 2, 2, 1);  // down two rows
    const auto put = [&](int row, int column, const QString& text) {
        table->cellAt(row, column).firstCursorPosition().insertText(text);
    };
    put(0, 0, QStringLiteral("wide"));
    put(0, 2, QStringLiteral("corner"));
    put(1, 0, QStringLiteral("a"));
    put(1, 1, QStringLiteral("b"));
    put(1, 2, QStringLiteral("tall"));
    put(2, 0, QStringLiteral("c"));
    QTextCursor inner = table->cellAt(2, 1).firstCursorPosition();
    inner.insertText(QStringLiteral("outer"));
    QTextTable* nested = inner.insertTable(1, 2);
    nested->cellAt(0, 0).firstCursorPosition().insertText(QStringLiteral("in1"));
    nested->cellAt(0, 1).firstCursorPosition().insertText(QStringLiteral("in2"));
    cursor.movePosition(QTextCursor::End);
    cursor.insertText(QStringLiteral("After"));
    return document;
}

}  // namespace

TEST_F(DocxRoundTripTest, RichSampleComesBackWithTheSameStructureAndPictureSize)
{
    const auto sample = richSampleDocument();
    const auto read = roundTrip(*sample);
    ASSERT_TRUE(read);
    EXPECT_EQ(structureOf(*read).toStdString(), structureOf(*sample).toStdString());
    EXPECT_EQ(pictureSizes(*read), QList<QSizeF>{QSizeF(30, 15)});
}

TEST_F(DocxRoundTripTest, SpansHeadingRowsAndNestedTablesComeBack)
{
    const auto sample = spanningTablesDocument();
    const auto read = roundTrip(*sample);
    ASSERT_TRUE(read);
    EXPECT_EQ(structureOf(*read).toStdString(), structureOf(*sample).toStdString());

    QTextTable* table = nullptr;
    for (QTextFrame* frame : read->rootFrame()->childFrames()) {
        if ((table = qobject_cast<QTextTable*>(frame)))
            break;
    }
    ASSERT_NE(table, nullptr);
    struct Span {
        int row, column, rowSpan, columnSpan;
    };
    const Span spans[] = {{0, 0, 1, 2}, {0, 2, 1, 1}, {1, 2, 2, 1}, {2, 1, 1, 1}};
    for (const Span& span : spans) {
        const QTextTableCell cell = table->cellAt(span.row, span.column);
        EXPECT_EQ(cell.rowSpan(), span.rowSpan) << span.row << "," << span.column;
        EXPECT_EQ(cell.columnSpan(), span.columnSpan) << span.row << "," << span.column;
    }
    EXPECT_EQ(table->format().headerRowCount(), 2);
}

// Every part is well-formed XML, every relationship to a part finds it, every content type
// the package needs is declared, and the archive passes the ZIP tools.
TEST_F(DocxRoundTripTest, PackageIsWellFormedForIndependentTools)
{
    const QString path = folder.filePath(QStringLiteral("sample.docx"));
    writeFile(path, docxBytes(*richSampleDocument()));
    EXPECT_EQ(independentCheckFailures(path), QStringList());
    const ToolRun check = runPython(QStringLiteral(
        "import sys, zipfile, posixpath, xml.dom.minidom as m\n"
        "z = zipfile.ZipFile(sys.argv[1]); names = set(z.namelist())\n"
        "for n in names:\n"
        "    if n.endswith('.xml') or n.endswith('.rels'): m.parseString(z.read(n))\n"
        "types = m.parseString(z.read('[Content_Types].xml'))\n"
        "defaults = {e.getAttribute('Extension') for e in types.getElementsByTagName('Default')}\n"
        "overrides = {e.getAttribute('PartName') for e in types.getElementsByTagName('Override')}\n"
        "for n in names:\n"
        "    assert '/' + n in overrides or n.rsplit('.', 1)[-1] in defaults, n\n"
        "for rels in [n for n in names if n.endswith('.rels')]:\n"
        "    base = posixpath.dirname(posixpath.dirname(rels))\n"
        "    for r in m.parseString(z.read(rels)).getElementsByTagName('Relationship'):\n"
        "        if r.getAttribute('TargetMode') != 'External':\n"
        "            target = posixpath.normpath(posixpath.join(base, r.getAttribute('Target')))\n"
        "            assert target in names, target\n"
        "print(len(names))\n"),
        {path});
    EXPECT_EQ(check.exitCode, 0) << check.output.toStdString();
    EXPECT_EQ(check.output.trimmed(), QStringLiteral("10"));  // nine fixed parts and one picture
}

}  // namespace wendrel::test
