#include "imaging/pdf/PageRotation.h"
#include "imaging/pdf/SplitPdf.h"

#include "TestPdfs.h"
#include "imaging/TestPictures.h"
#include "operations/OperationContext.h"
#include "operations/OperationError.h"
#include "support/TestEnvironment.h"

#include <QDir>
#include <QThread>

using namespace wendrel;
using namespace wendrel::test;

namespace {

// How many page objects qpdf finds in a file, whether its page tree lists them or not.
qsizetype pageObjectCount(const QString& path)
{
    return toolOutput(QStringLiteral("qpdf"), {QStringLiteral("--json"), QStringLiteral("--json-key=qpdf"), path})
        .count(QStringLiteral(R"("/Type": "/Page")"));
}

using PageToolsTest = PdfEntryTest;

}  // namespace

// Readers draw quarter turns only; whatever a page says, the turn starts from what they show.
TEST(PageRotationTest, QuarterTurnClockwiseFromWhatReadersShow)
{
    const struct {
        int rotate, shown, turned;
    } cases[] = {
        {0, 0, 90},    {90, 90, 180},   {180, 180, 270}, {270, 270, 0}, {360, 0, 90},  {-90, 270, 0}, {450, 90, 180}, {-450, 270, 0},
        {720, 0, 90},  {44, 0, 90},     {45, 90, 180},   {135, 180, 270}, {-45, 0, 90}, {-46, 270, 0}, {315, 0, 90},
    };
    for (const auto& testCase : cases) {
        EXPECT_EQ(shownRotation(testCase.rotate), testCase.shown) << testCase.rotate;
        EXPECT_EQ(rotationTurnedRight(testCase.rotate), testCase.turned) << testCase.rotate;
    }
}

TEST(SplitPdfTest, PageFilesAreNumberedToSortInPageOrder)
{
    const struct {
        int page, count;
        const char* name;
    } cases[] = {{1, 1, "Page 001.pdf"}, {999, 999, "Page 999.pdf"}, {7, 1000, "Page 0007.pdf"}, {10000, 10000, "Page 10000.pdf"}};
    for (const auto& testCase : cases)
        EXPECT_EQ(splitPageFileName(testCase.page, testCase.count), QString::fromLatin1(testCase.name));
}

TEST_F(PageToolsTest, RotateTurnsEveryPageRightInheritedRotationIncluded)
{
    TestPdf document = pagesOfText(5);
    document.treeRotate = 180;  // pages 1 and 4 have no /Rotate of their own and inherit it
    const int own[] = {0, 90, 270, 0, -90};
    for (int index = 0; index < 5; ++index)
        document.pages[index].rotate = own[index];
    const QString source = writeTestPdf(path("Scan.pdf"), document);
    ASSERT_EQ(pdfPageRotations(source), (QList<int>{180, 90, 270, 180, 270}));

    const JobReport report = run("pdf.rotate", source);
    ASSERT_TRUE(report.succeeded) << report.message.toStdString();
    EXPECT_EQ(report.results, QStringList{path("Scan Rotated.pdf")});
    EXPECT_EQ(pdfPageRotations(report.results.value(0)), (QList<int>{270, 180, 0, 270, 0}));
    EXPECT_TRUE(qpdfCheckPasses(report.results.value(0)));
    EXPECT_EQ(pdfToText(report.results.value(0)).count(QStringLiteral("Page ")), 5);
}

// Enough pages to be shared out to threads, all drawing from one resource dictionary in three
// faces; the first links to the third.
TEST_F(PageToolsTest, SplitWritesEachPageAsItsOwnPdfWithOnlyWhatItUses)
{
    const int pages = 40;
    const QString faces[] = {QStringLiteral("Helvetica"), QStringLiteral("Times-Roman"), QStringLiteral("Courier")};
    TestPdf document = pagesOfText(pages);
    document.sharedResources = true;
    document.links = {{.fromPage = 0, .target = {.page = 2}}};
    for (int index = 0; index < pages; ++index)
        document.pages[index].font = faces[index % 3];
    const JobReport report = run("pdf.split", writeTestPdf(path("Report.pdf"), document));
    ASSERT_TRUE(report.succeeded) << report.message.toStdString();
    EXPECT_EQ(report.results, QStringList{path("Report Pages")});

    QStringList expected;
    for (int page = 1; page <= pages; ++page)
        expected.append(QStringLiteral("Page %1.pdf").arg(page, 3, 10, QLatin1Char('0')));
    ASSERT_EQ(folderEntries(report.results.value(0)), expected);
    for (int page = 1; page <= pages; ++page) {
        const QString file = report.results.value(0) + u'/' + expected[page - 1];
        EXPECT_TRUE(qpdfCheckPasses(file)) << page;
        EXPECT_EQ(pdfPageCount(file), 1) << page;
        EXPECT_EQ(pdfToText(file).trimmed(), QStringLiteral("Page %1").arg(page));
        const QString fonts = toolOutput(QStringLiteral("pdffonts"), {file});
        for (int face = 0; face < 3; ++face)
            EXPECT_EQ(fonts.contains(faces[face]), face == (page - 1) % 3) << page << fonts.toStdString();
        EXPECT_EQ(pageObjectCount(file), 1) << page << ": a link to another page doesn't bring that page along";
    }
}

TEST_F(PageToolsTest, SplitReportsEveryPageAndStopsBetweenPagesWhenCancelled)
{
    const int pages = 60;
    const QString source = writeTestPdf(path("Long.pdf"), pagesOfText(pages));
    for (const int cancelAfter : {-1, 0, 5}) {  // pages written before the job is cancelled; -1: never
        const QString output = path(QStringLiteral("out%1").arg(cancelAfter));
        ASSERT_TRUE(QDir().mkpath(output));
        auto cancelled = std::make_shared<std::atomic_bool>(cancelAfter == 0);
        std::atomic_int reports{0};
        std::atomic<double> last{0};
        const OperationContext context(
            path("scratch"),
            [&](double fraction) {
                last = fraction;
                if (++reports == cancelAfter)
                    *cancelled = true;
            },
            cancelled);
        bool wasCancelled = false;
        try {
            splitPdfInto(source, output, context);
        } catch (const OperationCancelled&) {
            wasCancelled = true;
        }
        const qsizetype written = folderEntries(output).size();
        EXPECT_EQ(wasCancelled, cancelAfter >= 0) << cancelAfter;
        if (cancelAfter < 0) {
            EXPECT_EQ(std::tuple(written, reports.load(), last.load()), std::tuple(qsizetype(pages), pages, 1.0));
        } else {  // each thread finishes the page in hand, no more
            EXPECT_GE(written, cancelAfter);
            EXPECT_LE(written, cancelAfter + QThread::idealThreadCount());
        }
    }
}
