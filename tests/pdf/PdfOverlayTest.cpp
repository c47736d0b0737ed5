#include "imaging/ImagingOperations.h"
#include "operations/OperationCatalog.h"
#include "operations/prompt/AskBeforeRunning.h"
#include "operations/settings/SettingsStore.h"

#include "TestPdfs.h"
#include "support/JobHarness.h"
#include "support/TestEnvironment.h"

#include <QFileInfo>
#include <QProcess>
#include <QRectF>
#include <QRegularExpression>
#include <QTemporaryDir>

#include <gtest/gtest.h>

using namespace wendrel;
using namespace wendrel::test;

namespace {

struct Word {
    QRectF box;  // in points, from the top-left corner of the page as displayed
    QString text;
};

struct PageWords {
    QSizeF size;
    QList<Word> words;
};

QString run(const QString& program, const QStringList& arguments)
{
    QProcess process;
    process.start(program, arguments);
    process.waitForFinished(120'000);
    return QString::fromUtf8(process.readAllStandardOutput());
}

// pdftotext's word boxes, page by page, as a reader displays the pages.
QList<PageWords> wordsOf(const QString& path)
{
    const QString html = run(QStringLiteral("pdftotext"), {QStringLiteral("-bbox"), path, QStringLiteral("-")});
    static const QRegularExpression page(QStringLiteral(R"re(<page width="([\d.]+)" height="([\d.]+)">(.*?)</page>)re"),
                                         QRegularExpression::DotMatchesEverythingOption);
    static const QRegularExpression word(QStringLiteral(
        R"re(<word xMin="([\d.-]+)" yMin="([\d.-]+)" xMax="([\d.-]+)" yMax="([\d.-]+)">([^<]*)</word>)re"));
    QList<PageWords> pages;
    for (const QRegularExpressionMatch& pageMatch : page.globalMatch(html)) {
        PageWords words{{pageMatch.captured(1).toDouble(), pageMatch.captured(2).toDouble()}, {}};
        for (const QRegularExpressionMatch& w : word.globalMatch(pageMatch.captured(3))) {
            words.words.append({QRectF(QPointF(w.captured(1).toDouble(), w.captured(2).toDouble()),
                                       QPointF(w.captured(3).toDouble(), w.captured(4).toDouble())),
                                w.captured(5)});
        }
        pages.append(words);
    }
    return pages;
}

// The "i / n" line of a page: its text and the box around its three words.
std::pair<QString, QRectF> numberLine(const PageWords& page)
{
    for (qsizetype i = 1; i + 1 < page.words.size(); ++i) {
        if (page.words[i].text == u"/")
            return {page.words[i - 1].text + QStringLiteral(" / ") + page.words[i + 1].text,
                    page.words[i - 1].box.united(page.words[i + 1].box)};
    }
    return {};
}

// The text in the order it was written, without white space: pdftotext breaks text at an
// angle into pieces wherever its glyphs seem apart, but keeps their order.
QString textInWritingOrder(const QString& path)
{
    static const QRegularExpression space(QStringLiteral("\\s+"));
    return run(QStringLiteral("pdftotext"), {QStringLiteral("-raw"), path, QStringLiteral("-")}).remove(space);
}

// pdffonts' rows: font name and whether it is embedded.
QList<std::pair<QString, bool>> fontsOf(const QString& path)
{
    QList<std::pair<QString, bool>> fonts;
    const QStringList lines = run(QStringLiteral("pdffonts"), {path}).split(u'\n', Qt::SkipEmptyParts);
    static const QRegularExpression row(QStringLiteral(R"re(^(\S+)\s.*\s(yes|no)\s+(yes|no)\s+(yes|no)\s+\d+\s+\d+\s*$)re"));
    for (const QString& line : lines.mid(2)) {
        const QRegularExpressionMatch match = row.match(line);
        if (match.hasMatch())
            fonts.append({match.captured(1), match.captured(2) == u"yes"});
    }
    return fonts;
}

// The fonts the overlay added (the test documents' own Helvetica is a standard font, never
// embedded), each embedded.
QStringList addedFontsAllEmbedded(const QString& path)
{
    QStringList added;
    for (const auto& [name, embedded] : fontsOf(path)) {
        if (name == u"Helvetica")
            continue;
        EXPECT_TRUE(embedded) << name.toStdString() << " in " << path.toStdString();
        added.append(name);
    }
    return added;
}

QJsonObject textAnswer(const char* text)
{
    return {{QStringLiteral("text"), QString::fromUtf8(text)}};
}

class PdfOverlayTest : public ::testing::Test {
protected:
    void SetUp() override
    {
        QFile::remove(SettingsStore::filePath());
        registerImagingOperations(catalog);
    }

    void TearDown() override
    {
        QFile::remove(SettingsStore::filePath());
        EXPECT_TRUE(leftoverScratchFolders().isEmpty());
    }

    QString path(const QString& name) const { return folder.filePath(name); }

    JobReport runEntry(const char* id, const QString& file, const QJsonObject& answers = {})
    {
        const FileOperationPtr entry = catalog.find(QString::fromUtf8(id));
        if (!entry) {
            ADD_FAILURE() << "no entry " << id;
            return {};
        }
        return runJob(runner, {.operation = entry, .paths = {file}, .answers = answers});
    }

    // The single result of a job that must succeed, checked by qpdf.
    QString result(const char* id, const QString& file, const QJsonObject& answers = {})
    {
        const JobReport report = runEntry(id, file, answers);
        EXPECT_TRUE(report.succeeded) << report.message.toStdString();
        const QString made = report.results.value(0);
        EXPECT_TRUE(qpdfCheckPasses(made)) << made.toStdString();
        return made;
    }

    QTemporaryDir folder;
    OperationCatalog catalog;
    JobRunner runner;
};

TEST_F(PdfOverlayTest, NumbersEveryPageCentredTwentyPointsAboveTheBottomAsDisplayed)
{
    const TestPage letter{}, landscape{.width = 842, .height = 595}, turned{.rotate = 90},
        upsideDown{.rotate = 180}, turnedBack{.width = 400, .height = 300, .rotate = 270};
    const struct {
        const char* name;
        QList<TestPage> pages;
    } documents[] = {
        {"letter.pdf", {letter, letter, letter}},
        {"mixed.pdf", {landscape, turned, upsideDown, turnedBack}},
    };
    for (const auto& document : documents) {
        const QString source = writeTestPdf(path(QString::fromLatin1(document.name)), {.pages = document.pages});
        const QString numbered = result("pdf.number", source);
        EXPECT_EQ(QFileInfo(numbered).fileName(), QFileInfo(source).completeBaseName() + QStringLiteral(" Numbered.pdf"));

        const QList<PageWords> pages = wordsOf(numbered);
        ASSERT_EQ(pages.size(), document.pages.size()) << document.name;
        for (qsizetype i = 0; i < pages.size(); ++i) {
            const auto [text, box] = numberLine(pages[i]);
            EXPECT_EQ(text, QStringLiteral("%1 / %2").arg(i + 1).arg(pages.size())) << document.name << " page " << i;
            // pdftotext gives the boxes as displayed but the page's size as stored.
            const TestPage& page = document.pages[i];
            const QSizeF displayed = page.rotate % 180 == 0 ? QSizeF(page.width, page.height)
                                                            : QSizeF(page.height, page.width);
            EXPECT_NEAR(box.center().x(), displayed.width() / 2, 0.5) << document.name << " page " << i;
            EXPECT_NEAR(displayed.height() - box.bottom(), 20, 0.5) << document.name << " page " << i;
            EXPECT_NEAR(box.height(), 11.6, 1) << "10 pt text, ascent to descent";
        }
        EXPECT_TRUE(pdfToText(numbered).contains(u"Page 2")) << "the page's own text stays text";
    }
}

TEST_F(PdfOverlayTest, ALongDocumentGrowsByLittleMoreThanItsNumbersAndEmbedsOneFont)
{
    const QString source = writeTestPdf(path(QStringLiteral("long.pdf")), pagesOfText(300));
    const QString numbered = result("pdf.number", source);
    const qint64 growth = QFileInfo(numbered).size() - QFileInfo(source).size();
    // A font subset of a dozen glyphs, then a small form per page.
    EXPECT_LT(growth, 20'000 + 300 * 400) << growth;
    EXPECT_EQ(addedFontsAllEmbedded(numbered), QStringList{QStringLiteral("DejaVuSans")});
    EXPECT_EQ(pdfPageCount(numbered), 300);
    const QString text = pdfToText(numbered);
    EXPECT_TRUE(text.contains(u"Page 300") && text.contains(u"300 / 300")) << "both texts are extractable";
}

TEST_F(PdfOverlayTest, WatermarksAnyScriptWithEmbeddedFontsAndTheSamePageSizeSharesOneForm)
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
    const QString source = writeTestPdf(path(QStringLiteral("three.pdf")), pagesOfText(3));
    for (const auto& testCase : cases) {
        const QString marked = result("pdf.watermark", source, {{QStringLiteral("text"), testCase.text}});
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

TEST_F(PdfOverlayTest, BadInputsGiveTheirMessageAndLeaveNothingBehind)
{
    const QByteArray whole = readFile(writeTestPdf(path(QStringLiteral("whole.pdf")), pagesOfText(2)));
    QFile::remove(path(QStringLiteral("whole.pdf")));
    writeFile(path(QStringLiteral("truncated.pdf")), whole.left(whole.size() / 3));
    writeTestPdf(path(QStringLiteral("locked.pdf")), {.userPassword = QStringLiteral("secret")});
    // A page whose box has no area: nothing can be drawn to its size.
    writeTestPdf(path(QStringLiteral("flat.pdf")), {.pages = {TestPage{.width = 612, .height = 0}}});

    const struct {
        const char* file;
        const char* message;
    } cases[] = {
        {"truncated.pdf", "Can't open this PDF"},
        {"locked.pdf", "This PDF is password-protected"},
        {"flat.pdf", "Couldn't create the PDF"},
    };
    const QStringList before = folderEntries(folder.path());
    for (const char* id : {"pdf.number", "pdf.watermark"}) {
        for (const auto& testCase : cases) {
            const QString file = path(QString::fromLatin1(testCase.file));
            const QByteArray original = readFile(file);
            const JobReport report = runEntry(id, file);
            EXPECT_FALSE(report.succeeded) << id << " " << testCase.file;
            ASSERT_EQ(report.failures.size(), 1) << id << " " << testCase.file;
            EXPECT_EQ(report.failures.first().message, QString::fromLatin1(testCase.message)) << id << " " << testCase.file;
            EXPECT_EQ(readFile(file), original);
        }
    }
    EXPECT_EQ(folderEntries(folder.path()), before);
}

TEST_F(PdfOverlayTest, TheCommandLineDrawsTextWithoutADisplay)
{
    const QString source = writeTestPdf(path(QStringLiteral("talk.pdf")), pagesOfText(2));
    QProcess process;
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.remove(QStringLiteral("DISPLAY"));
    process.setProcessEnvironment(environment);
    process.start(QStringLiteral(WENDREL_BINARY),
                  {QStringLiteral("run"), QStringLiteral("pdf.watermark"), QStringLiteral("--text"),
                   QStringLiteral("Entwurf"), source});
    ASSERT_TRUE(process.waitForFinished(120'000));
    EXPECT_EQ(process.exitCode(), 0) << process.readAllStandardError().toStdString();
    const QString marked = path(QStringLiteral("talk Watermarked.pdf"));
    EXPECT_TRUE(qpdfCheckPasses(marked));
    EXPECT_EQ(textInWritingOrder(marked).count(u"Entwurf"), 2);
}

}  // namespace
