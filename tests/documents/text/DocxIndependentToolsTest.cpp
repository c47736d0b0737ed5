#include "DocumentSamples.h"
#include "DocxTestPackages.h"
#include "documents/ZipTestTools.h"

#include <QDir>
#include <QFile>
#include <QProcess>
#include <QRegularExpression>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QTextDocument>

#include <gtest/gtest.h>

namespace wendrel::test {

namespace {

bool installed(const QString& program)
{
    return !QStandardPaths::findExecutable(program).isEmpty();
}

class DocxIndependentToolsTest : public ::testing::Test {
protected:
    QString path(const QString& name) const { return folder.filePath(name); }

    QString writeSample()
    {
        const QString sample = path(QStringLiteral("sample.docx"));
        writeBytes(sample, docxBytes(*richSampleDocument()));
        return sample;
    }

    // The headless word processor, with a profile of its own so parallel runs don't meet; its
    // first start in a fresh profile is slow, hence the long wait.
    ToolRun office(const QStringList& arguments)
    {
        QProcess process;
        process.setProcessChannelMode(QProcess::MergedChannels);
        process.start(QStringLiteral("soffice"),
                      QStringList{QStringLiteral("-env:UserInstallation=file://") + path(QStringLiteral("profile")),
                                  QStringLiteral("--headless"), QStringLiteral("--norestore")}
                          + arguments);
        if (!process.waitForStarted(10'000))
            return {-1, QStringLiteral("soffice could not be started")};
        if (!process.waitForFinished(280'000)) {
            process.kill();
            process.waitForFinished();
            return {-1, QStringLiteral("soffice did not finish")};
        }
        return {process.exitCode(), QString::fromUtf8(process.readAll())};
    }

    QTemporaryDir folder;
};

TEST_F(DocxIndependentToolsTest, PandocReadsOurHeadingsStylesListsTableAndLink)
{
    if (!installed(QStringLiteral("pandoc")))
        GTEST_SKIP() << "pandoc is not installed";
    const ToolRun run = runTool(QStringLiteral("pandoc"), {QStringLiteral("-f"), QStringLiteral("docx"), QStringLiteral("-t"),
                                                          QStringLiteral("markdown"), QStringLiteral("--wrap=none"), writeSample()});
    ASSERT_EQ(run.exitCode, 0) << run.output.toStdString();
    const QString markdown = run.output;
    const char* expected[] = {
        R"(^# Quarterly Report$)",
        R"(^## Lists$)",
        R"(^Plain, \*\*bold\*\*, \*italic\*, .*`code`, a \[link\]\(https://example\.org/a\?b=1&c=2\) and Ünïcödé)",
        R"(^-   First$)",
        R"(^-   Second$)",
        R"(^    1\.  Sub one$)",
        R"(^    2\.  Sub two$)",
        R"(^-   Third$)",
        R"(^ *\*\*Name\*\* +\*\*Value\*\*$)",
        R"(^ *Width +42$)",
        R"(^A picture: !\[\]\(media/image1\.png\))",
    };
    for (const char* pattern : expected) {
        const QRegularExpression line(QString::fromUtf8(pattern), QRegularExpression::MultilineOption);
        EXPECT_TRUE(line.match(markdown).hasMatch()) << pattern << "\nin:\n" << markdown.toStdString();
    }
}

TEST_F(DocxIndependentToolsTest, WeReadWhatPandocWritesFromMarkdown)
{
    if (!installed(QStringLiteral("pandoc")))
        GTEST_SKIP() << "pandoc is not installed";
    QFile markdown(path(QStringLiteral("in.md")));
    ASSERT_TRUE(markdown.open(QIODevice::WriteOnly));
    markdown.write("# Main Title\n\n"
                   "Some *emphasis*, **strong**, `code` and a [link](https://example.com/page).\n\n"
                   "## Lists\n\n"
                   "- Apple\n- Banana\n    1. One\n    2. Two\n- Cherry\n\n"
                   "| Name | Count |\n|------|-------|\n| Figs | 3 |\n| Kiwi | 5 |\n");
    markdown.close();
    const QString docx = path(QStringLiteral("pandoc.docx"));
    const ToolRun run = runTool(QStringLiteral("pandoc"),
                                {markdown.fileName(), QStringLiteral("-o"), docx});
    ASSERT_EQ(run.exitCode, 0) << run.output.toStdString();
    const ReadResult read = readDocxFile(docx);
    ASSERT_TRUE(read.document) << read.error.toStdString();
    EXPECT_EQ(structureOf(*read.document).toStdString(),
              "h1 Main Title\n"
              "p Some *emphasis*, **strong**, `code` and a [link](https://example.com/page).\n"
              "h2 Lists\n"
              "ul1 Apple\n"
              "ul1 Banana\n"
              "ol2 One\n"
              "ol2 Two\n"
              "ul1 Cherry\n"
              "table 2x3 header 1\n"
              "cell 0,0 p Name\n"
              "cell 0,1 p Count\n"
              "cell 1,0 p Figs\n"
              "cell 1,1 p 3\n"
              "cell 2,0 p Kiwi\n"
              "cell 2,1 p 5");
}

// The word processor lays our document out as a PDF with all of its text, and its own DOCX of
// our document reads back with the same structure: it understood every part.
TEST_F(DocxIndependentToolsTest, WordProcessorOpensPrintsAndRewritesOurDocument)
{
    if (!installed(QStringLiteral("soffice")))
        GTEST_SKIP() << "soffice is not installed";
    const QString sample = writeSample();
    const QString pdfFolder = path(QStringLiteral("pdf"));
    const QString docxFolder = path(QStringLiteral("docx"));
    ToolRun run = office({QStringLiteral("--convert-to"), QStringLiteral("pdf"), QStringLiteral("--outdir"), pdfFolder, sample});
    ASSERT_EQ(run.exitCode, 0) << run.output.toStdString();
    run = office({QStringLiteral("--convert-to"), QStringLiteral("docx"), QStringLiteral("--outdir"), docxFolder, sample});
    ASSERT_EQ(run.exitCode, 0) << run.output.toStdString();

    if (installed(QStringLiteral("pdftotext"))) {
        const ToolRun text = runTool(QStringLiteral("pdftotext"), {pdfFolder + QStringLiteral("/sample.pdf"), QStringLiteral("-")});
        ASSERT_EQ(text.exitCode, 0) << text.output.toStdString();
        for (const QString& expected : {QStringLiteral("Quarterly Report"), QStringLiteral("Ünïcödé"), QStringLiteral("<tags> &"),
                                        QStringLiteral("Sub two"), QStringLiteral("Text with, comma"), QStringLiteral("\"quoted\""),
                                        QStringLiteral("A picture:"), QStringLiteral("break.")})
            EXPECT_TRUE(text.output.contains(expected)) << expected.toStdString() << "\nin:\n" << text.output.toStdString();
    }

    const ReadResult read = readDocxFile(docxFolder + QStringLiteral("/sample.docx"));
    ASSERT_TRUE(read.document) << read.error.toStdString();
    EXPECT_EQ(structureOf(*read.document).toStdString(), structureOf(*richSampleDocument()).toStdString());
}

}  // namespace

}  // namespace wendrel::test
