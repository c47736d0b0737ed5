#include "ConverterTools.h"
#include "DocumentSamples.h"

#include "documents/rtf/RtfReader.h"
#include "documents/rtf/RtfWriter.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QTextDocument>

#include <gtest/gtest.h>

// Independent programs judge the RTF: pandoc reads what we write and writes what we read, and
// LibreOffice lays our RTF out as a PDF whose text pdftotext gives back.
namespace wendrel::test {

namespace {

struct PandocCase {
    const char* name;
    const char* markdown;
    const char* expected;
};

}  // namespace

TEST(RtfToolsTest, PandocReadsOurRtf)
{
    if (!toolExists(QStringLiteral("pandoc")))
        GTEST_SKIP() << "pandoc is not installed";
    const QString markdown =
        runTool(QStringLiteral("pandoc"), {QStringLiteral("-f"), QStringLiteral("rtf"), QStringLiteral("-t"),
                                           QStringLiteral("markdown-smart"), QStringLiteral("--wrap=none")},
                writeRtf(*richSampleDocument()));
    for (const char* expected : {"# Quarterly Report", "## Lists", "## Table", "-   First", "-   Second",
                                 "1.  Sub one", "2.  Sub two", "-   Third", "**bold**", "*italic*", "~~struck~~",
                                 "`code`", "(https://example.org/a?b=1&c=2)", "Ünïcödé — 日本語", "{braces} \\\\ back",
                                 "**Name**", "**Value**", "Text with, comma", "42", "![image]", "line\\\nbreak."})
        EXPECT_TRUE(markdown.contains(QString::fromUtf8(expected))) << expected << "\n" << markdown.toStdString();
}

TEST(RtfToolsTest, WeReadRtfPandocWrites)
{
    if (!toolExists(QStringLiteral("pandoc")))
        GTEST_SKIP() << "pandoc is not installed";
    const PandocCase cases[] = {
        {"headings and inline styles", "# Title\n\n## Second *level*\n\nSome **bold**, *italic*, `code` and é ü 日本.\n",
         "h1 Title\nh2 Second *level*\np Some **bold**, *italic*, `code` and é ü 日本."},
        {"nested lists", "- one\n- two\n    1. sub a\n    2. sub b\n- three\n",
         "ul1 one\nul1 two\nol2 sub a\nol2 sub b\nul1 three"},
        {"a table", "| A | B |\n|---|---|\n| 1 | 2 |\n| x | y |\n",
         "table 2x3 header 0\ncell 0,0 p A\ncell 0,1 p B\ncell 1,0 p 1\ncell 1,1 p 2\ncell 2,0 p x\ncell 2,1 p y"},
        {"a link and a line break", "See [the site](https://example.org/) now  \nand then.\n",
         "p See [the site](https://example.org/) now⏎and then."},
        {"a code block", "```\nint x = 1;\n```\n", "p `int x = 1;`"},
    };
    for (const PandocCase& testCase : cases) {
        SCOPED_TRACE(testCase.name);
        const QString rtf = runTool(QStringLiteral("pandoc"),
                                    {QStringLiteral("-f"), QStringLiteral("markdown"), QStringLiteral("-s"),
                                     QStringLiteral("-t"), QStringLiteral("rtf")},
                                    testCase.markdown);
        EXPECT_EQ(structureOf(*readRtf(rtf.toUtf8())).toStdString(), testCase.expected) << rtf.toStdString();
    }
}

TEST(RtfToolsTest, PandocPictureIsRead)
{
    if (!toolExists(QStringLiteral("pandoc")))
        GTEST_SKIP() << "pandoc is not installed";
    QTemporaryDir folder;
    ASSERT_TRUE(folder.isValid());
    QFile picture(folder.filePath(QStringLiteral("red.png")));
    ASSERT_TRUE(picture.open(QIODevice::WriteOnly));
    picture.write(samplePng());
    picture.close();
    const QString rtf = runTool(QStringLiteral("pandoc"),
                                {QStringLiteral("-f"), QStringLiteral("markdown"), QStringLiteral("-s"), QStringLiteral("-t"),
                                 QStringLiteral("rtf"), QStringLiteral("--resource-path=") + folder.path()},
                                "A ![red](red.png) picture.\n");
    EXPECT_EQ(structureOf(*readRtf(rtf.toUtf8())).toStdString(),
              "picture 40x20\np A [picture] picture.");
}

TEST(RtfToolsTest, LibreOfficeLaysOutOurRtf)
{
    if (!toolExists(QStringLiteral("soffice")))
        GTEST_SKIP() << "LibreOffice is not installed";
    if (!toolExists(QStringLiteral("pdftotext")))
        GTEST_SKIP() << "pdftotext is not installed";
    QTemporaryDir folder;
    ASSERT_TRUE(folder.isValid());
    const QString source = folder.filePath(QStringLiteral("sample.rtf"));
    QFile file(source);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write(writeRtf(*richSampleDocument()));
    file.close();

    // A profile of its own, so the test neither meets a running LibreOffice nor changes the user's.
    const QString profile = QStringLiteral("-env:UserInstallation=file://") + folder.filePath(QStringLiteral("profile"));
    runTool(QStringLiteral("soffice"), {profile, QStringLiteral("--headless"), QStringLiteral("--convert-to"),
                                        QStringLiteral("pdf"), QStringLiteral("--outdir"), folder.path(), source});
    const QString page = runTool(QStringLiteral("pdftotext"), {QStringLiteral("-layout"),
                                                               folder.filePath(QStringLiteral("sample.pdf")), QStringLiteral("-")});
    for (const char* expected : {"Quarterly Report", "Plain, bold, italic, underlined, struck, code, a link and Ünïcödé",
                                 "<tags> &", "{braces} \\ back", "•", "First", "1. Sub one", "2. Sub two", "Third",
                                 "Name", "Value", "Width", "42", "Text with, comma", "\"quoted\"", "A picture:", "break."})
        EXPECT_TRUE(page.contains(QString::fromUtf8(expected))) << expected << "\n" << page.toStdString();
}

}  // namespace wendrel::test
