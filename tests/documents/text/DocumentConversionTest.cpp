#include "DocumentSamples.h"
#include "support/JobHarness.h"
#include "support/TestEnvironment.h"
#include "support/ToolRun.h"

#include "documents/DocumentOperations.h"
#include "documents/docx/DocxWriter.h"
#include "documents/html/HtmlWriter.h"
#include "documents/markdown/MarkdownToHtml.h"
#include "documents/odt/OdtWriter.h"
#include "documents/rtf/RtfWriter.h"
#include "documents/text/MarkdownWriter.h"
#include "documents/text/PlainTextWriter.h"
#include "operations/OperationCatalog.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QTextDocument>

#include <gtest/gtest.h>

namespace wendrel::test {

namespace {

using namespace Qt::StringLiterals;
using namespace document;

const QStringList targets{u"pdf"_s, u"docx"_s, u"rtf"_s, u"odt"_s, u"html"_s, u"txt"_s, u"md"_s, u"epub"_s};

// The sample document in every format the ring converts from, written by our own writers.
void writeSources(const QString& folder)
{
    const auto sample = richSampleDocument();
    QFile docx(folder + u"/Report.docx"_s);
    docx.open(QIODevice::WriteOnly);
    writeDocx(*sample, docx);
    docx.close();
    writeOdt(*sample, folder + u"/Report.odt"_s);
    writeFile(folder + u"/Report.rtf"_s, writeRtf(*sample));
    writeFile(folder + u"/Report.html"_s, documentToHtml(*sample, {.title = u"Report"_s}).toUtf8());
    writeFile(folder + u"/Report.md"_s, documentToMarkdown(*sample).toUtf8());
    writeFile(folder + u"/Report.txt"_s, documentToPlainText(*sample).toUtf8());
}

// What a reader that owes nothing to ours finds in a file, as plain text.
QString independentText(const QString& path)
{
    if (path.endsWith(u".pdf"))
        return runTool(u"pdftotext"_s, {path, u"-"_s}).output;
    // Plain text is read as the simplest Markdown, which takes any text as it is.
    const QStringList from = path.endsWith(u".txt") ? QStringList{u"-f"_s, u"commonmark"_s} : QStringList{};
    return runTool(u"pandoc"_s, from + QStringList{u"-t"_s, u"plain"_s, u"--wrap=none"_s, path}).output;
}

class DocumentConversionTest : public ::testing::Test {
protected:
    void SetUp() override { registerDocumentOperations(catalog); }
    void TearDown() override { EXPECT_TRUE(leftoverScratchFolders().isEmpty()); }

    QTemporaryDir folder;
    OperationCatalog catalog;
    JobRunner runner;
};

}  // namespace

// Every source format to every other target, through the entries as real jobs: each result is
// placed under the source's name with the target's extension, and an independent reader
// (pdftotext, pandoc) finds the document's text in it, tables and nested lists included.
TEST_F(DocumentConversionTest, EverySourceConvertsToEveryOtherTarget)
{
    if (runTool(u"pandoc"_s, {u"--version"_s}).exitCode != 0)
        GTEST_SKIP() << "pandoc is not installed";
    writeSources(folder.path());
    for (const QString& from : {u"docx"_s, u"odt"_s, u"rtf"_s, u"html"_s, u"md"_s, u"txt"_s}) {
        const QString source = folder.filePath(u"Report."_s + from);
        const QString out = folder.filePath(u"from-"_s + from);
        ASSERT_TRUE(QDir().mkpath(out));
        for (const QString& to : targets) {
            const FileOperationPtr entry = catalog.find(u"doc."_s + to);
            ASSERT_TRUE(entry) << to.toStdString();
            const bool offered = catalog.fitting(RingKind::convert, {source}).contains(entry);
            EXPECT_EQ(offered, from != to) << from.toStdString() << " → " << to.toStdString();
            if (!offered)
                continue;
            const JobReport report = runJob(runner, entry, {source}, out);
            const std::string shown = (from + u" → "_s + to).toStdString();
            ASSERT_TRUE(report.succeeded) << shown << ": " << report.message.toStdString();
            EXPECT_EQ(report.results, QStringList{out + u"/Report."_s + to}) << shown;
            const QString text = independentText(report.results.value(0));
            for (const QString& expected : {u"Quarterly Report"_s, u"Sub one"_s, u"Text with, comma"_s, u"日本語"_s})
                EXPECT_TRUE(text.contains(expected)) << shown << " lacks " << expected.toStdString()
                                                     << ":\n" << text.toStdString();
        }
    }
}

// Markdown to a web page is the system's own converter, not the document model: its page is
// exactly the converter's, titled after the file (the converter's tests check its pages).
TEST_F(DocumentConversionTest, MarkdownBecomesTheConvertersOwnPage)
{
    const QString notes = folder.filePath(u"Notes & <Plans>.md"_s);
    writeFile(notes, "# Plans\n\nSome *text* with snake_case.\n");
    const JobReport report = runJob(runner, catalog.find(u"doc.html"_s), {notes});
    ASSERT_TRUE(report.succeeded) << report.message.toStdString();
    EXPECT_EQ(readFile(report.results.value(0)), markdownToHTML(u"# Plans\n\nSome *text* with snake_case.\n"_s,
                                                                u"Notes & <Plans>"_s).toUtf8());
}

// Sources that can't be read fail with one message; nothing is placed and the scratch folder
// goes. Tables and subtitles aren't offered the document targets at all.
TEST_F(DocumentConversionTest, UnreadableSourcesFailWithOneMessage)
{
    const struct {
        const char* name;
        QByteArray bytes;
    } cases[] = {
        {"Binary.docx", QByteArray("\x7f" "ELF\x02\x01\x01\0\0\0", 10).repeated(100)}, {"Empty.odt", QByteArray()},
        {"Latin.txt", QByteArray("caf\xe9 cr\xe8me\n")}, {"Nothing.rtf", QByteArray("plain words, no rich text")},
    };
    for (const auto& bad : cases) {
        const QString path = folder.filePath(QString::fromUtf8(bad.name));
        writeFile(path, bad.bytes);
        const JobReport report = runJob(runner, catalog.find(u"doc.pdf"_s), {path});
        EXPECT_FALSE(report.succeeded) << bad.name;
        EXPECT_EQ(report.message, u"Can't read this document"_s) << bad.name;
        EXPECT_EQ(readFile(path), bad.bytes) << bad.name;
    }
    EXPECT_EQ(QDir(folder.path()).entryList(QDir::Files).size(), int(std::size(cases)));

    for (const char* name : {"table.csv", "table.tsv", "talk.srt", "talk.vtt"}) {
        const QString path = folder.filePath(QString::fromUtf8(name));
        writeFile(path, "a,b\n");
        for (const FileOperationPtr& entry : catalog.fitting(RingKind::convert, {path}))
            EXPECT_FALSE(entry->id().startsWith(u"doc.")) << name << " is offered " << entry->id().toStdString();
    }
}

}  // namespace wendrel::test
