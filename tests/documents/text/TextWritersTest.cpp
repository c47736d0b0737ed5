#include "DocumentSamples.h"

#include "documents/model/DocumentModel.h"
#include "documents/text/MarkdownWriter.h"
#include "documents/text/PlainTextWriter.h"
#include "documents/text/TextReaders.h"
#include "support/TestEnvironment.h"

#include <QTextCursor>
#include <QTextDocument>
#include <QTextList>

#include <gtest/gtest.h>

namespace wendrel::test {

namespace {

// A document of the paragraphs given as Markdown, read by Qt's reader: a quick way to make
// small documents of any shape for the writers.
std::unique_ptr<QTextDocument> fromQtMarkdown(const QString& markdown)
{
    auto document = std::make_unique<QTextDocument>();
    document->setMarkdown(markdown, QTextDocument::MarkdownDialectGitHub);
    return document;
}

std::unique_ptr<QTextDocument> paragraph(const QString& text, const document::InlineStyle& style = {})
{
    auto result = std::make_unique<QTextDocument>();
    QTextCursor cursor(result.get());
    cursor.insertText(text, document::charFormat(style));
    return result;
}

}  // namespace

TEST(PlainTextWriterTest, SampleBecomesReadableText)
{
    const auto sample = richSampleDocument();
    EXPECT_EQ(document::documentToPlainText(*sample),
              QStringLiteral("Quarterly Report\n\n"
                             "Plain, bold, italic, underlined, struck, code, a link and Ünïcödé — 日本語 <tags> & {braces} \\ back\n\n"
                             "Lists\n\n"
                             "• First\n"
                             "• Second\n"
                             "  1. Sub one\n"
                             "  2. Sub two\n"
                             "• Third\n\n"
                             "Table\n\n"
                             "Name\tValue\n"
                             "Width\t42\n"
                             "Text with, comma\t\"quoted\"\n\n"
                             "A picture:  and a line\nbreak.\n"));
}

TEST(PlainTextWriterTest, ShapesOfText)
{
    const struct {
        const char* markdown;
        const char* text;
    } cases[] = {
        {"", ""}, {"1. one\n2. two\n   - deep\n     1. deeper\n", "1. one\n2. two\n  • deep\n    1. deeper\n"},
        {"a\n\n- b\n\nc\n", "a\n\n• b\n\nc\n"}, {"| a | b | c |\n|---|---|---|\n| 1 |   | 3 |\n", "a\tb\tc\n1\t\t3\n"},
    };
    for (const auto& c : cases) {
        const auto document = fromQtMarkdown(QString::fromUtf8(c.markdown));
        EXPECT_EQ(document::documentToPlainText(*document), QString::fromUtf8(c.text)) << c.markdown;
    }
}

TEST(PlainTextWriterTest, LineBreakInListItemKeepsTheItemsIndentation)
{
    QTextDocument document;
    QTextCursor cursor(&document);
    cursor.createList(document::listFormat(true, 1));
    cursor.insertText(QStringLiteral("first") + QChar(QChar::LineSeparator) + QStringLiteral("continued"));
    EXPECT_EQ(document::documentToPlainText(document), QStringLiteral("1. first\n   continued\n"));
    EXPECT_EQ(document::documentToMarkdown(document), QStringLiteral("1. first\\\n   continued\n"));
}

TEST(MarkdownWriterTest, SampleBecomesGitHubMarkdown)
{
    const auto sample = richSampleDocument();
    EXPECT_EQ(document::documentToMarkdown(*sample),
              QStringLiteral("# Quarterly Report\n\n"
                             "Plain, **bold**, *italic*, underlined, ~~struck~~, `code`, a [link](https://example.org/a?b=1&c=2)"
                             " and Ünïcödé — 日本語 \\<tags\\> & {braces} \\\\ back\n\n"
                             "## Lists\n\n"
                             "- First\n"
                             "- Second\n"
                             "  1. Sub one\n"
                             "  2. Sub two\n"
                             "- Third\n\n"
                             "## Table\n\n"
                             "| **Name** | **Value** |\n"
                             "| --- | --- |\n"
                             "| Width | 42 |\n"
                             "| Text with, comma | \"quoted\" |\n\n"
                             "A picture:  and a line\\\n"
                             "break.\n"));
}

TEST(MarkdownWriterTest, TextThatLooksLikeMarkupStaysText)
{
    const struct {
        const char* text;
        document::InlineStyle style;
        const char* markdown;
    } cases[] = {
        {"# not a heading", {}, "\\# not a heading\n"}, {"- not a list", {}, "\\- not a list\n"},
        {"+ nor this", {}, "\\+ nor this\n"}, {"1. not numbered", {}, "1\\. not numbered\n"},
        {"2) nor this", {}, "2\\) nor this\n"}, {"    not code", {}, "not code\n"},
        {"a *b* _c_ `d` [e](f) <g> ~h~ &amp; & x|y", {}, "a \\*b\\* \\_c\\_ \\`d\\` \\[e\\](f) \\<g\\> \\~h\\~ \\&amp; & x|y\n"},
        {" spaced bold ", {.bold = true}, "**spaced bold**\n"}, {"has `ticks`", {.code = true}, "`` has `ticks` ``\n"},
        {"`edge", {.code = true}, "`` `edge ``\n"},
        {"all", {.bold = true, .italic = true, .strike = true}, "***~~all~~***\n"},
        {"odd (target)", {.link = QStringLiteral("https://e.org/a b(c)")}, "[odd (target)](https://e.org/a%20b%28c%29)\n"},
    };
    for (const auto& c : cases) {
        const auto document = paragraph(QString::fromUtf8(c.text), c.style);
        EXPECT_EQ(document::documentToMarkdown(*document), QString::fromUtf8(c.markdown)) << c.text;
    }
}

TEST(MarkdownWriterTest, ListsAndTables)
{
    const struct {
        const char* markdown;  // read by Qt's reader, written by ours
        const char* written;
    } cases[] = {
        {"9. nine\n10. ten\n    - under ten\n", "1. nine\n2. ten\n   - under ten\n"},
        {"- a\n\n<!-- -->\n\n- b\n", "- a\n\n* b\n"},
        {"| a \\| b | `c` |\n|---|---|\n| 1 | |\n", "| **a \\| b** | `c` |\n| --- | --- |\n| 1 |   |\n"},
    };
    for (const auto& c : cases) {
        const auto document = fromQtMarkdown(QString::fromUtf8(c.markdown));
        EXPECT_EQ(document::documentToMarkdown(*document), QString::fromUtf8(c.written)) << c.markdown;
    }
}

// Our Markdown, read back by Qt's reader, keeps the sample's structure (less
// underlining and the picture, which Markdown can't hold).
TEST(MarkdownWriterTest, ReadersFindTheSampleStructure)
{
    const auto sample = richSampleDocument();
    const QString markdown = document::documentToMarkdown(*sample);
    const auto read = document::readMarkdown(markdown, QString());
    QString expected = structureOf(*sample);
    expected.replace(QStringLiteral("_underlined_"), QStringLiteral("underlined"));
    expected.replace(QStringLiteral("picture 40x20\n"), QString());
    expected.replace(QStringLiteral("[picture] "), QString());
    EXPECT_EQ(structureOf(*read), expected);
}

}  // namespace wendrel::test
