#include "DocumentSamples.h"

#include "documents/model/DocumentModel.h"
#include "documents/rtf/RtfReader.h"
#include "documents/rtf/RtfWriter.h"

#include <QBuffer>
#include <QImage>
#include <QTextCursor>
#include <QTextDocument>
#include <QTextTable>

#include <gtest/gtest.h>

#include <functional>

namespace wendrel::test {

namespace {

QByteArray sampleJpeg()
{
    QImage image(16, 8, QImage::Format_RGB32);
    image.fill(Qt::blue);
    QByteArray bytes;
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::WriteOnly);
    image.save(&buffer, "JPEG");
    return bytes;
}

// Documents with what the sample has not: every heading level, merged and nested table cells,
// a JPEG, a character beyond U+FFFF and a heading-less numbered list.
std::unique_ptr<QTextDocument> documentWith(const std::function<void(QTextDocument&, QTextCursor&)>& fill)
{
    auto document = std::make_unique<QTextDocument>();
    QTextCursor cursor(document.get());
    fill(*document, cursor);
    return document;
}

struct RoundTripCase {
    const char* name;
    std::function<void(QTextDocument&, QTextCursor&)> fill;
    const char* expected;
};

}  // namespace

// The sample comes back with its structure from ASCII in short lines.
TEST(RtfRoundTripTest, SampleKeepsItsStructureThroughAsciiInShortLines)
{
    const auto sample = richSampleDocument();
    const QByteArray rtf = writeRtf(*sample);
    EXPECT_EQ(structureOf(*readRtf(rtf)).toStdString(), structureOf(*sample).toStdString());
    ASSERT_TRUE(rtf.startsWith("{\\rtf1\\ansi\\ansicpg1252\\deff0"));
    for (const char c : rtf)
        ASSERT_TRUE(c == '\r' || c == '\n' || (c >= 0x20 && c < 0x7F)) << int(c);
    for (const QByteArray& line : rtf.split('\n'))
        EXPECT_LE(line.size(), 260) << line.toStdString();
    // Non-ASCII: a Windows-1252 fallback where there is one, signed numbers past U+7FFF.
    EXPECT_TRUE(rtf.contains("\\u220\\'dc")) << "Ü";
    EXPECT_TRUE(rtf.contains("\\u-30050 ?")) << "語 is U+8A9E";
    EXPECT_TRUE(rtf.contains("\\{braces\\} \\\\ back"));
}

TEST(RtfRoundTripTest, OtherStructuresKeepTheirShape)
{
    const RoundTripCase cases[] = {
        {"every heading level",
         [](QTextDocument&, QTextCursor& cursor) {
             for (int level = 1; level <= 6; ++level) {
                 if (level > 1)
                     cursor.insertBlock(QTextBlockFormat(), QTextCharFormat());
                 document::setHeading(cursor, level);
                 cursor.insertText(QStringLiteral("Level %1").arg(level));
             }
         },
         "h1 Level 1\nh2 Level 2\nh3 Level 3\nh4 Level 4\nh5 Level 5\nh6 Level 6"},
        {"characters beyond U+FFFF and tabs",
         [](QTextDocument&, QTextCursor& cursor) {
             cursor.insertText(QStringLiteral("smile 😀 and 𝄞, tab\there"));
         },
         "p smile 😀 and 𝄞, tab here"},
        {"merged cells",
         [](QTextDocument&, QTextCursor& cursor) {
             QTextTable* table = cursor.insertTable(3, 3);
             table->mergeCells(0, 0, 1, 2);
             table->mergeCells(1, 2, 2, 1);
             const char* texts[3][3] = {{"wide", "", "c"}, {"d", "e", "tall"}, {"g", "h", ""}};
             for (int row = 0; row < 3; ++row) {
                 for (int column = 0; column < 3; ++column) {
                     const QTextTableCell cell = table->cellAt(row, column);
                     if (cell.row() == row && cell.column() == column)
                         cell.firstCursorPosition().insertText(QString::fromUtf8(texts[row][column]));
                 }
             }
         },
         "table 3x3 header 0\ncell 0,0 p wide\ncell 0,2 p c\ncell 1,0 p d\ncell 1,1 p e\ncell 1,2 p tall\n"
         "cell 2,0 p g\ncell 2,1 p h"},
        {"a table in a table",
         [](QTextDocument&, QTextCursor& cursor) {
             QTextTable* outer = cursor.insertTable(1, 2);
             QTextCursor first = outer->cellAt(0, 0).firstCursorPosition();
             first.insertText(QStringLiteral("before"));
             first.insertBlock();
             QTextTable* inner = first.insertTable(2, 1);
             inner->cellAt(0, 0).firstCursorPosition().insertText(QStringLiteral("inner one"));
             inner->cellAt(1, 0).firstCursorPosition().insertText(QStringLiteral("inner two"));
             outer->cellAt(0, 1).firstCursorPosition().insertText(QStringLiteral("beside"));
         },
         "table 2x1 header 0\ncell 0,0 p before\ntable 1x2 header 0\ncell 0,0 p inner one\ncell 1,0 p inner two\n"
         "cell 0,1 p beside"},
        {"a JPEG picture and two separate lists",
         [](QTextDocument& document, QTextCursor& cursor) {
             cursor.insertImage(document::addPicture(document, sampleJpeg()));
             cursor.insertBlock(QTextBlockFormat(), QTextCharFormat());
             cursor.createList(document::listFormat(true, 1));
             cursor.insertText(QStringLiteral("one"));
             cursor.insertBlock(QTextBlockFormat(), QTextCharFormat());
             cursor.insertText(QStringLiteral("between"));
             cursor.insertBlock(QTextBlockFormat(), QTextCharFormat());
             cursor.createList(document::listFormat(false, 1));
             cursor.insertText(QStringLiteral("dot"));
         },
         "picture 16x8\np [picture]\nol1 one\np between\nul1 dot"},
    };
    for (const RoundTripCase& testCase : cases) {
        SCOPED_TRACE(testCase.name);
        const auto original = documentWith(testCase.fill);
        ASSERT_EQ(structureOf(*original).toStdString(), testCase.expected);
        EXPECT_EQ(structureOf(*readRtf(writeRtf(*original))).toStdString(), testCase.expected);
    }
}

}  // namespace wendrel::test
