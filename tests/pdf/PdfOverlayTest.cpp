#include "operations/prompt/AskBeforeRunning.h"

#include "TestPdfs.h"
#include "imaging/TestPictures.h"

#include <QFileInfo>
#include <QProcess>
#include <QRectF>
#include <QRegularExpression>

#include <gtest/gtest.h>

using namespace wendrel;
using namespace wendrel::test;

namespace {

struct Word {
    QRectF box;  // in points, from the top-left corner of the page as displayed
    QString text;
};

// pdftotext's word boxes, page by page, as a reader displays the pages.
QList<QList<Word>> wordsOf(const QString& path)
{
    const QString html = toolOutput(QStringLiteral("pdftotext"), {QStringLiteral("-bbox"), path, QStringLiteral("-")});
    static const QRegularExpression page(QStringLiteral("<page [^>]*>(.*?)</page>"), QRegularExpression::DotMatchesEverythingOption);
    static const QRegularExpression word(QStringLiteral(
        R"re(<word xMin="([\d.-]+)" yMin="([\d.-]+)" xMax="([\d.-]+)" yMax="([\d.-]+)">([^<]*)</word>)re"));
    QList<QList<Word>> pages;
    for (const QRegularExpressionMatch& pageMatch : page.globalMatch(html)) {
        pages.append(QList<Word>());
        for (const QRegularExpressionMatch& w : word.globalMatch(pageMatch.captured(1))) {
            pages.last().append({QRectF(QPointF(w.captured(1).toDouble(), w.captured(2).toDouble()),
                                        QPointF(w.captured(3).toDouble(), w.captured(4).toDouble())),
                                 w.captured(5)});
        }
    }
    return pages;
}

// The "i / n" line of a page: its text and the box around its three words.
std::pair<QString, QRectF> numberLine(const QList<Word>& words)
{
    for (qsizetype i = 1; i + 1 < words.size(); ++i) {
        if (words[i].text == u"/")
            return {words[i - 1].text + QStringLiteral(" / ") + words[i + 1].text, words[i - 1].box.united(words[i + 1].box)};
    }
    return {};
}

// The text in the order it was written, without white space: pdftotext breaks text at an
// angle into pieces wherever its glyphs seem apart, but keeps their order.
QString textInWritingOrder(const QString& path)
{
    static const QRegularExpression space(QStringLiteral("\\s+"));
    return toolOutput(QStringLiteral("pdftotext"), {QStringLiteral("-raw"), path, QStringLiteral("-")}).remove(space);
}

// The fonts pdffonts lists but the test documents' own Helvetica (a standard font, never
// embedded): those the overlay added, each of which must be embedded.
QStringList addedFontsAllEmbedded(const QString& path)
{
    QStringList added;
    for (const QString& line : toolOutput(QStringLiteral("pdffonts"), {path}).split(u'\n', Qt::SkipEmptyParts).mid(2)) {
        const QStringList columns = line.simplified().split(u' ');  // name … emb sub uni object-number generation
        if (columns.first() != u"Helvetica") {
            EXPECT_EQ(columns.value(columns.size() - 5), u"yes") << line.toStdString() << " in " << path.toStdString();
            added.append(columns.first());
        }
    }
    return added;
}

QJsonObject textAnswer(const char* text)
{
    return {{QStringLiteral("text"), QString::fromUtf8(text)}};
}

class PdfOverlayTest : public PdfEntryTest {
protected:
    // The single result of a job that must succeed, checked by qpdf.
    QString result(const char* id, const QString& file, const QJsonObject& answers = {})
    {
        const JobReport report = run(id, file, answers);
        EXPECT_TRUE(report.succeeded) << report.message.toStdString();
        EXPECT_TRUE(qpdfCheckPasses(report.results.value(0))) << report.results.value(0).toStdString();
        return report.results.value(0);
    }
};

// A long document of pages of every shape and turn: each gets its number where it is seen, the
// file grows by little more than the numbers, and one font is embedded for all of them.
TEST_F(PdfOverlayTest, NumbersEveryPageCentredTwentyPointsAboveTheBottomAsDisplayed)
{
    const TestPage shapes[] = {{}, {.width = 842, .height = 595}, {.rotate = 90}, {.rotate = 180},
                               {.width = 400, .height = 300, .rotate = 270}};
    const int count = 300;
    TestPdf document = pagesOfText(count);
    for (int i = 0; i < count; ++i)
        document.pages[i] = shapes[i % 5];
    const QString source = writeTestPdf(path("long.pdf"), document);
    const QString numbered = result("pdf.number", source);
    EXPECT_EQ(QFileInfo(numbered).fileName(), u"long Numbered.pdf");

    const QList<QList<Word>> pages = wordsOf(numbered);
    ASSERT_EQ(pages.size(), count);
    for (int i = 0; i < count; ++i) {
        const auto [text, box] = numberLine(pages[i]);
        EXPECT_EQ(text, QStringLiteral("%1 / %2").arg(i + 1).arg(count)) << "page " << i;
        // pdftotext gives the boxes as displayed but the page's size as stored.
        const TestPage& page = document.pages[i];
        const QSizeF displayed = page.rotate % 180 == 0 ? QSizeF(page.width, page.height) : QSizeF(page.height, page.width);
        EXPECT_NEAR(box.center().x(), displayed.width() / 2, 0.5) << "page " << i;
        EXPECT_NEAR(displayed.height() - box.bottom(), 20, 0.5) << "page " << i;
        EXPECT_NEAR(box.height(), 11.6, 1) << "10 pt text, ascent to descent";
    }
    // A font subset of a dozen glyphs, then a small form per page.
    const qint64 growth = QFileInfo(numbered).size() - QFileInfo(source).size();
    EXPECT_LT(growth, 20'000 + count * 400) << growth;
    EXPECT_EQ(addedFontsAllEmbedded(numbered), QStringList{QStringLiteral("DejaVuSans")});
    EXPECT_EQ(pdfPageCount(numbered), count);
    const QString text = pdfToText(numbered);
    EXPECT_TRUE(text.contains(u"Page 300") && text.contains(u"300 / 300")) << "the page's own text and the numbers are text";
}

// Run as from a terminal, with no display to draw on.
TEST_F(PdfOverlayTest, TheCommandLineWatermarksAnyScriptWithEmbeddedFontsWithoutADisplay)
{
    const struct {
        QString text;
        QString extracted;  // what pdftotext reads back
        QString font;       // a font that must be among the embedded ones
    } cases[] = {
        {QStringLiteral("CONFIDENTIAL"), QStringLiteral("CONFIDENTIAL"), QStringLiteral("DejaVuSans-Bold")},
        {QStringLiteral("Εμπιστευτικό"), QStringLiteral("Εμπιστευτικό"), QStringLiteral("DejaVuSans-Bold")},
        {QStringLiteral("Секретно"), QStringLiteral("Секретно"), QStringLiteral("DejaVuSans-Bold")},
        {QStringLiteral("机密文件"), QStringLiteral("机密文件"), QStringLiteral("WenQuanYiMicroHei")},
        // The emoji's glyph embeds, but Qt's writer gives characters beyond the first plane no
        // text mapping, so only the words beside it read back.
        {QStringLiteral("Draft \U0001F98A"), QStringLiteral("Draft"), QStringLiteral("Symbola")},
    };
    const QString source = writeTestPdf(path("three.pdf"), pagesOfText(3));
    const QString marked = path("three Watermarked.pdf");
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.remove(QStringLiteral("DISPLAY"));
    for (const auto& testCase : cases) {
        QProcess process;
        process.setProcessEnvironment(environment);
        process.start(QStringLiteral(WENDREL_BINARY), {QStringLiteral("run"), QStringLiteral("pdf.watermark"), QStringLiteral("--text"),
                                                       testCase.text, source});
        ASSERT_TRUE(process.waitForFinished(120'000));
        EXPECT_EQ(process.exitCode(), 0) << process.readAllStandardError().toStdString();
        EXPECT_TRUE(qpdfCheckPasses(marked)) << testCase.text.toStdString();
        const QString text = textInWritingOrder(marked);
        EXPECT_EQ(text.count(testCase.extracted), 3) << testCase.text.toStdString();
        EXPECT_TRUE(text.contains(u"Page3")) << testCase.text.toStdString();
        EXPECT_TRUE(addedFontsAllEmbedded(marked).contains(testCase.font)) << testCase.text.toStdString();
        QFile::remove(marked);
    }
}

TEST_F(PdfOverlayTest, ThePromptStartsWithConfidentialRemembersTheTextAndCancellingRunsNothing)
{
    const FileOperationPtr entry = catalog.find(QStringLiteral("pdf.watermark"));
    ASSERT_TRUE(entry);
    const QStringList files{QStringLiteral("/a.pdf"), QStringLiteral("/b.pdf")};
    std::optional<PromptRequest> asked;
    const auto answering = [&](const QJsonObject& answers) {
        return [&asked, answers](const PromptRequest& request) {
            asked = request;
            return std::optional(answers);
        };
    };

    EXPECT_EQ(askBeforeRunning(*entry, files, answering({})), textAnswer("CONFIDENTIAL"));
    ASSERT_TRUE(asked && asked->fields.size() == 1);
    const PromptField& field = asked->fields.first();
    EXPECT_EQ(std::tuple(field.kind, field.key, field.label, field.option, field.required),
              std::tuple(PromptField::Kind::text, QStringLiteral("text"), QStringLiteral("Watermark text"),
                         QStringLiteral("text"), true));
    EXPECT_EQ(asked->confirmText, u"Watermark 2 PDFs");

    EXPECT_TRUE(askBeforeRunning(*entry, files, answering(textAnswer("Draft"))));
    EXPECT_FALSE(askBeforeRunning(*entry, files, answering(textAnswer("  ")))) << "the text is required";
    EXPECT_FALSE(askBeforeRunning(*entry, files, [](const PromptRequest&) { return std::optional<QJsonObject>(); }));
    askBeforeRunning(*entry, files, answering({}));
    EXPECT_EQ(asked->startingAnswers(), textAnswer("Draft")) << "the last confirmed text, not a cancelled one";
}

}  // namespace
