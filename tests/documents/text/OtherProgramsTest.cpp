#include "DocumentSamples.h"
#include "DocxTestPackages.h"

#include "documents/odt/OdtReader.h"
#include "documents/odt/OdtWriter.h"
#include "documents/rtf/RtfReader.h"
#include "documents/rtf/RtfWriter.h"
#include "documents/text/MarkdownWriter.h"
#include "support/TestEnvironment.h"
#include "support/ToolRun.h"

#include <QRegularExpression>
#include <QTemporaryDir>
#include <QTextDocument>

#include <gtest/gtest.h>

#include <functional>

// Programs that owe nothing to ours judge the document formats: pandoc reads what we write and
// writes what we read, and the office suite lays ours out as PDFs and saves its own of them.
namespace wendrel::test {

namespace {

using namespace Qt::StringLiterals;

class OtherProgramsTest : public ::testing::Test {
protected:
    QString path(const QString& name) const { return folder.filePath(name); }

    // The sample document written by our writer of `format`, as "sample-<format>.<format>".
    QString writeSample(const QString& format)
    {
        const auto sample = richSampleDocument();
        const QString file = path(u"sample-%1.%1"_s.arg(format));
        if (format == u"odt") {
            document::writeOdt(*sample, file);
        } else {
            writeFile(file, format == u"docx"  ? docxBytes(*sample)
                            : format == u"rtf" ? writeRtf(*sample)
                                               : document::documentToMarkdown(*sample).toUtf8());
        }
        return file;
    }

    // What we read from a file in `format`.
    static QString structureRead(const QString& format, const QString& file)
    {
        if (format == u"docx") {
            const ReadResult read = readDocxFile(file);
            return read.document ? structureOf(*read.document) : read.error;
        }
        if (format == u"rtf")
            return structureOf(*readRtf(readFile(file)));
        return structureOf(*document::readOdt(file));
    }

    QTemporaryDir folder;
};

}  // namespace

// Pandoc finds the sample's headings, inline styles, link, nested lists, table, picture and
// line break in what each of our writers makes.
TEST_F(OtherProgramsTest, PandocReadsTheSampleFromEachWriter)
{
    if (!toolExists(u"pandoc"_s))
        GTEST_SKIP() << "pandoc is not installed";
    const char* everywhere[] = {
        R"(^# Quarterly Report$)", R"(^## Lists$)", R"(^## Table$)", R"(\*\*bold\*\*)", R"(\*italic\*)", R"(~~struck~~)",
        R"(\[link\]\(https://example\.org/a\?b=1&c=2\))", R"(Ünïcödé — 日本語)", R"(^-   First$)", R"(^-   Second$)",
        R"(^    1\.  Sub one$)", R"(^    2\.  Sub two$)", R"(^-   Third$)", R"(Text with, comma)", R"(a line\\$)", R"(^break\.$)",
    };
    const struct {
        const char* format;
        const char* reader;
        QStringList more;  // what this writer alone keeps
    } writers[] = {
        {"docx", "docx", {uR"(`code`)"_s, uR"(^ *\*\*Name\*\* +\*\*Value\*\*$)"_s, uR"(^A picture: !\[\]\(media/image1\.png\))"_s}},
        {"rtf", "rtf", {uR"(`code`)"_s, uR"(\*\*Name\*\*)"_s, uR"(!\[image\])"_s}},
        {"odt", "odt", {uR"(^ *Width +42$)"_s}},
        {"md", "gfm", {uR"(`code`)"_s, uR"(\*\*Name\*\*)"_s, uR"(\\<tags\\> & \{braces\} \\\\ back)"_s}},
    };
    for (const auto& writer : writers) {
        const QString markdown = toolOutput(u"pandoc"_s, {u"-f"_s, QString::fromUtf8(writer.reader), u"-t"_s, u"markdown-smart"_s,
                                                          u"--wrap=none"_s, writeSample(QString::fromUtf8(writer.format))});
        QStringList patterns = writer.more;
        for (const char* pattern : everywhere)
            patterns.append(QString::fromUtf8(pattern));
        for (const QString& pattern : patterns) {
            EXPECT_TRUE(QRegularExpression(pattern, QRegularExpression::MultilineOption).match(markdown).hasMatch())
                << writer.format << " lacks " << pattern.toStdString() << " in:\n" << markdown.toStdString();
        }
    }
}

// What pandoc writes from one Markdown text, each of our readers reads with its structure.
TEST_F(OtherProgramsTest, WeReadWhatPandocWrites)
{
    if (!toolExists(u"pandoc"_s))
        GTEST_SKIP() << "pandoc is not installed";
    writeFile(path(u"red.png"_s), samplePng());
    writeFile(path(u"in.md"_s), "# Main Title\n\n## Second *level*\n\n"
                                "Some *emphasis*, **strong**, `code` and a [link](https://example.com/page), é ü 日本.\n\n"
                                "- Apple\n- Banana\n    1. One\n    2. Two\n- Cherry\n\n"
                                "| Name | Count |\n|------|-------|\n| Figs | 3 |\n| Kiwi | 5 |\n\n"
                                "A ![red](red.png) picture, a line  \nbreak.\n\n```\nint x = 1;\n```\n");
    const QString expected = u"h1 Main Title\nh2 Second *level*\n"
                             "p Some *emphasis*, **strong**, `code` and a [link](https://example.com/page), é ü 日本.\n"
                             "ul1 Apple\nul1 Banana\nol2 One\nol2 Two\nul1 Cherry\n"
                             "table 2x3 header %1\ncell 0,0 p Name\ncell 0,1 p Count\ncell 1,0 p Figs\ncell 1,1 p 3\n"
                             "cell 2,0 p Kiwi\ncell 2,1 p 5\npicture 40x20\np A [picture] picture, a line⏎break.\np `int x = 1;`"_s;
    // Its RTF has no heading rows.
    for (const auto& [format, headerRows] : {std::pair(u"docx"_s, u"1"_s), std::pair(u"rtf"_s, u"0"_s)}) {
        const QString file = path(u"pandoc."_s + format);
        toolOutput(u"pandoc"_s, {u"-s"_s, u"--resource-path="_s + folder.path(), path(u"in.md"_s), u"-o"_s, file});
        EXPECT_EQ(structureRead(format, file), expected.arg(headerRows)) << format.toStdString();
    }
}

// The office suite lays each of our documents out as a PDF with all of its text; its own DOCX
// and ODT of ours read back with the sample's structure, and we read the ODT it makes of a web
// page of its own.
TEST_F(OtherProgramsTest, OfficeSuitePrintsAndResavesOurDocumentsAndWeReadItsOwn)
{
    if (!toolExists(u"soffice"_s) || !toolExists(u"pdftotext"_s))
        GTEST_SKIP() << "soffice or pdftotext is not installed";
    const QString profile = path(u"profile"_s);
    const QStringList formats{u"docx"_s, u"odt"_s, u"rtf"_s};
    QStringList samples;
    for (const QString& format : formats)
        samples.append(writeSample(format));
    runOffice(profile, QStringList{u"--convert-to"_s, u"pdf"_s, u"--outdir"_s, path(u"pdf"_s)} + samples);
    for (const QString& format : formats) {
        const QString text = toolOutput(u"pdftotext"_s, {path(u"pdf/sample-%1.pdf"_s.arg(format)), u"-"_s}).simplified();
        for (const char* expected : {"Quarterly Report", "Plain, bold, italic, underlined, struck, code, a link and Ünïcödé",
                                     "<tags> & {braces} \\ back", "First", "1. Sub one", "2. Sub two", "Third", "Name", "Value",
                                     "Width", "42", "Text with, comma", "\"quoted\"", "A picture:", "break."})
            EXPECT_TRUE(text.contains(QString::fromUtf8(expected))) << format.toStdString() << " lacks " << expected << "\n"
                                                                    << text.toStdString();
    }

    writeFile(path(u"made.html"_s),
              "<html><body><h1>Title</h1><p>Plain <b>bold</b> <i>italic</i> <u>under</u> <s>struck</s> <code>code</code> "
              "<a href=\"https://example.org/x\">link</a></p><ul><li>First</li><li>Second<ol><li>Sub</li></ol></li></ul>"
              "<table border=1><thead><tr><th>Name</th><th>Value</th></tr></thead><tbody><tr><td colspan=2>Wide</td></tr>"
              "</tbody></table><p>line<br>break</p></body></html>");
    runOffice(profile, {u"--convert-to"_s, u"odt:writer8"_s, u"--outdir"_s, path(u"resaved"_s), samples[1], path(u"made.html"_s)});
    runOffice(profile, {u"--convert-to"_s, u"docx"_s, u"--outdir"_s, path(u"resaved"_s), samples[0]});
    const QString sample = structureOf(*richSampleDocument());
    EXPECT_EQ(structureRead(u"docx"_s, path(u"resaved/sample-docx.docx"_s)), sample);
    EXPECT_EQ(structureRead(u"odt"_s, path(u"resaved/sample-odt.odt"_s)), sample);
    EXPECT_EQ(structureRead(u"odt"_s, path(u"resaved/made.odt"_s)),
              u"h1 Title\n"
              "p Plain **bold** *italic* _under_ ~~struck~~ `code` [link](https://example.org/x)\n"
              "ul1 First\nul1 Second\nol2 Sub\n"
              "table 2x2 header 1\ncell 0,0 p **Name**\ncell 0,1 p **Value**\ncell 1,0 p Wide\n"
              "p line⏎break"_s);
}

}  // namespace wendrel::test
