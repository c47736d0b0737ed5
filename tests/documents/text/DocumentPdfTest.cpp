#include "DocumentSamples.h"

#include "documents/pdfout/DocumentPdfWriter.h"
#include "documents/pdfout/PaperSize.h"
#include "operations/OperationError.h"
#include "support/TestEnvironment.h"
#include "support/ToolRun.h"

#include <QFile>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <QTextCursor>
#include <QTextDocument>

#include <gtest/gtest.h>

#include <thread>

namespace wendrel::test {

namespace {

class DocumentPdfTest : public ::testing::Test {
protected:
    void SetUp() override
    {
        ASSERT_TRUE(m_folder.isValid());
        for (const char* tool : {"qpdf", "pdftotext", "pdffonts", "pdfinfo", "pdfimages"}) {
            if (!toolExists(QString::fromLatin1(tool)))
                GTEST_SKIP() << tool << " is not installed";
        }
    }

    QString path(const QString& name) const { return m_folder.filePath(name); }

    QTemporaryDir m_folder;
};

// pdfinfo's "Key: value" lines.
QString pdfInfoValue(const QString& info, const QString& key)
{
    const QRegularExpression line(u'^' + key + QStringLiteral(":\\s*(.*)$"), QRegularExpression::MultilineOption);
    return line.match(info).captured(1).trimmed();
}

}  // namespace

TEST(PaperSizeTest, LetterOnlyForTheNorthAmericanSize)
{
    const struct {
        int width;
        int height;
        QPageSize::PageSizeId paper;
    } cases[] = {
        {216, 279, QPageSize::Letter}, {210, 297, QPageSize::A4}, {279, 216, QPageSize::A4}, {0, 0, QPageSize::A4},
    };
    for (const auto& c : cases)
        EXPECT_EQ(document::paperForMillimetres(c.width, c.height), c.paper) << c.width << "x" << c.height;
}

TEST_F(DocumentPdfTest, SampleIsAValidPdfWithTextFontsPictureLinkTitleAndPaper)
{
    const auto sample = richSampleDocument();
    const QString pdf = path(QStringLiteral("sample.pdf"));
    document::writeDocumentPdf(*sample, pdf, QStringLiteral("Quarterly Report Ü"));

    EXPECT_EQ(runTool(QStringLiteral("qpdf"), {QStringLiteral("--check"), pdf}).exitCode, 0);

    const QString text = toolOutput(QStringLiteral("pdftotext"), {pdf, QStringLiteral("-")}).simplified();
    for (const char* expected : {"Quarterly Report", "Plain, bold, italic, underlined, struck, code, a link",
                                 "Ünïcödé — 日本語 <tags> & {braces} \\ back", "First Second", "1. Sub one",
                                 "Text with, comma", "\"quoted\"", "A picture:", "and a line", "break."}) {
        EXPECT_TRUE(text.contains(QString::fromUtf8(expected))) << expected << "\n" << text.toStdString();
    }

    // Every font embedded: pdffonts' "emb" column says "yes" on each font line.
    const QStringList fonts = toolOutput(QStringLiteral("pdffonts"), {pdf}).split(u'\n', Qt::SkipEmptyParts).mid(2);
    ASSERT_FALSE(fonts.isEmpty());
    for (const QString& font : fonts) {
        const QStringList columns = font.split(u' ', Qt::SkipEmptyParts);
        ASSERT_GE(columns.size(), 5) << font.toStdString();
        EXPECT_EQ(columns[columns.size() - 5], QStringLiteral("yes")) << font.toStdString();
    }
    EXPECT_TRUE(fonts.join(u'\n').contains(QStringLiteral("DejaVuSans")));

    const QString info = toolOutput(QStringLiteral("pdfinfo"), {pdf});
    EXPECT_EQ(pdfInfoValue(info, QStringLiteral("Title")), QStringLiteral("Quarterly Report Ü"));
    EXPECT_EQ(pdfInfoValue(info, QStringLiteral("Pages")), QStringLiteral("1"));
    // The locale's paper: A4 in the C locale (the tests' own) and everywhere but North America.
    EXPECT_EQ(pdfInfoValue(info, QStringLiteral("Page size")), document::defaultPaper() == QPageSize::Letter
                                                                  ? QStringLiteral("612 x 792 pts (letter)")
                                                                  : QStringLiteral("595 x 842 pts (A4)"));
    if (qEnvironmentVariableIsEmpty("LC_ALL") && qEnvironmentVariableIsEmpty("LC_PAPER") && qEnvironmentVariableIsEmpty("LANG")) {
        EXPECT_EQ(document::defaultPaper(), QPageSize::A4);
    }

    // The picture, drawn at its size in points: 40 pixels across 30 points are 96 per inch.
    const QStringList images = toolOutput(QStringLiteral("pdfimages"), {QStringLiteral("-list"), pdf})
                                   .split(u'\n', Qt::SkipEmptyParts).mid(2);
    ASSERT_EQ(images.size(), 1);
    const QStringList imageColumns = images[0].split(u' ', Qt::SkipEmptyParts);
    EXPECT_EQ(imageColumns[3], QStringLiteral("40"));
    EXPECT_EQ(imageColumns[4], QStringLiteral("20"));
    EXPECT_EQ(imageColumns[12], QStringLiteral("96"));

    EXPECT_TRUE(readFile(pdf).contains("/URI (https://example.org/a?b=1&c=2)"));
}

QStringList g_warnings;

// Long documents flow over pages with every page's text, read and written on a job's thread
// (not a QThread) without a word in the log.
TEST_F(DocumentPdfTest, ManyPagesOnAJobThread)
{
    const QString pdf = path(QStringLiteral("long.pdf"));
    g_warnings.clear();
    const QtMessageHandler previous = qInstallMessageHandler([](QtMsgType type, const QMessageLogContext&, const QString& message) {
        if (type != QtDebugMsg && type != QtInfoMsg)
            g_warnings.append(message);
    });
    std::thread worker([&] {
        QTextDocument document;
        QTextCursor cursor(&document);
        for (int paragraph = 1; paragraph <= 400; ++paragraph) {
            if (paragraph > 1)
                cursor.insertBlock();
            cursor.insertText(QStringLiteral("Paragraph %1 of the long document, with enough words to fill a line or "
                                             "two of the page so the text flows over several pages.")
                                  .arg(paragraph));
        }
        document::writeDocumentPdf(document, pdf, QStringLiteral("Long"));
    });
    worker.join();
    qInstallMessageHandler(previous);
    EXPECT_EQ(g_warnings, QStringList());

    const int pages = pdfInfoValue(toolOutput(QStringLiteral("pdfinfo"), {pdf}), QStringLiteral("Pages")).toInt();
    EXPECT_GT(pages, 10);
    const QString lastPage = toolOutput(QStringLiteral("pdftotext"), {QStringLiteral("-f"), QString::number(pages),
                                                                    QStringLiteral("-l"), QString::number(pages), pdf,
                                                                    QStringLiteral("-")});
    EXPECT_TRUE(lastPage.contains(QStringLiteral("Paragraph 400 of")));
    EXPECT_TRUE(lastPage.contains(QString::number(pages)));  // the page number
}

TEST_F(DocumentPdfTest, UnwritablePlaceIsAClearError)
{
    const auto sample = richSampleDocument();
    try {
        document::writeDocumentPdf(*sample, path(QStringLiteral("missing-folder/x.pdf")), QString());
        FAIL() << "wrote into a folder that doesn't exist";
    } catch (const OperationError& error) {
        EXPECT_TRUE(error.message().startsWith(QStringLiteral("Couldn't save the PDF")));
    }
    EXPECT_FALSE(QFile::exists(path(QStringLiteral("missing-folder"))));
}

}  // namespace wendrel::test
