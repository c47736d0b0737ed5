#include "imaging/ImagingOperations.h"
#include "imaging/VipsRuntime.h"
#include "imaging/pdf/PageRotation.h"
#include "imaging/pdf/SplitPdf.h"

#include "TestPdfs.h"
#include "operations/JobRunner.h"
#include "operations/OperationCatalog.h"
#include "operations/OperationContext.h"
#include "operations/OperationError.h"
#include "support/JobHarness.h"
#include "support/TestEnvironment.h"

#include <QDir>
#include <QFileInfo>
#include <QProcess>
#include <QRegularExpression>
#include <QThread>
#include <QTemporaryDir>

#include <qpdf/QPDF.hh>
#include <qpdf/QPDFWriter.hh>
#include <vips/vips8>

#include <gtest/gtest.h>

using namespace wendrel;
using namespace wendrel::test;

namespace {

QString toolOutput(const QString& program, const QStringList& arguments)
{
    QProcess process;
    process.start(program, arguments);
    process.waitForFinished(120'000);
    return QString::fromUtf8(process.readAllStandardOutput());
}

// pdfinfo's rotation of every page, in order.
QList<int> pageRotations(const QString& path)
{
    const QString info = toolOutput(QStringLiteral("pdfinfo"), {QStringLiteral("-f"), QStringLiteral("1"),
                                                                QStringLiteral("-l"), QStringLiteral("9999"), path});
    QList<int> rotations;
    QRegularExpressionMatchIterator matches = QRegularExpression(QStringLiteral("Page +\\d+ rot: +(-?\\d+)")).globalMatch(info);
    while (matches.hasNext())
        rotations.append(matches.next().captured(1).toInt());
    return rotations;
}

// How many page objects a file holds, whether its page tree lists them or not.
int pageObjectCount(const QString& path)
{
    QPDF pdf;
    pdf.processFile(QFile::encodeName(path).constData());
    int count = 0;
    for (QPDFObjectHandle object : pdf.getAllObjects())
        count += object.isDictionaryOfType("/Page") ? 1 : 0;
    return count;
}

// Three pages drawing from one shared resource dictionary, each with its own font of the
// three; the first page links to the third.
void writeSharedResourcesPdf(const QString& path)
{
    QPDF pdf;
    pdf.emptyPDF();
    QPDFObjectHandle fonts = QPDFObjectHandle::newDictionary();
    const char* faces[] = {"Helvetica", "Times-Roman", "Courier"};
    for (int index = 0; index < 3; ++index) {
        fonts.replaceKey("/F" + std::to_string(index + 1),
                         pdf.makeIndirectObject(QPDFObjectHandle::parse(std::string("<< /Type /Font /Subtype /Type1 /BaseFont /")
                                                                        + faces[index] + " >>")));
    }
    QPDFObjectHandle resources = pdf.makeIndirectObject(QPDFObjectHandle::newDictionary());
    resources.replaceKey("/Font", fonts);
    std::vector<QPDFObjectHandle> pages;
    for (int index = 0; index < 3; ++index) {
        const std::string number = std::to_string(index + 1);
        QPDFObjectHandle page = pdf.makeIndirectObject(QPDFObjectHandle::parse("<< /Type /Page /MediaBox [0 0 612 792] >>"));
        page.replaceKey("/Resources", resources);
        page.replaceKey("/Contents", QPDFObjectHandle::newStream(&pdf, "BT /F" + number + " 24 Tf 72 72 Td (Page " + number + ") Tj ET"));
        pdf.addPage(page, false);
        pages.push_back(page);
    }
    QPDFObjectHandle link = QPDFObjectHandle::parse("<< /Type /Annot /Subtype /Link /Rect [0 0 100 100] >>");
    link.replaceKey("/Dest", QPDFObjectHandle::newArray({pages[2], QPDFObjectHandle::newName("/Fit")}));
    pages[0].replaceKey("/Annots", QPDFObjectHandle::newArray({pdf.makeIndirectObject(link)}));
    QPDFWriter writer(pdf, QFile::encodeName(path).constData());
    writer.write();
}

class PageToolsTest : public ::testing::Test {
protected:
    void SetUp() override { registerImagingOperations(catalog); }
    void TearDown() override { EXPECT_TRUE(leftoverScratchFolders().isEmpty()); }

    QString path(const QString& name) const { return folder.filePath(name); }

    JobReport run(const char* id, const QString& file, const QJsonObject& answers = {})
    {
        const FileOperationPtr entry = catalog.find(QString::fromUtf8(id));
        if (!entry) {
            ADD_FAILURE() << "no entry " << id;
            return {};
        }
        return runJob(runner, JobRequest{.operation = entry, .paths = {file}, .answers = answers});
    }

    QTemporaryDir folder;
    OperationCatalog catalog;
    JobRunner runner;
};

}  // namespace

// Readers draw quarter turns only; whatever a page says, the turn starts from what they show.
TEST(PageRotationTest, QuarterTurnClockwiseFromWhatReadersShow)
{
    const struct {
        int rotate;
        int shown;
        int turned;
    } cases[] = {
        {0, 0, 90},       {90, 90, 180},   {180, 180, 270}, {270, 270, 0},   {360, 0, 90},
        {-90, 270, 0},    {450, 90, 180},  {-450, 270, 0},  {720, 0, 90},    {44, 0, 90},
        {45, 90, 180},    {135, 180, 270}, {-45, 0, 90},    {-46, 270, 0},   {315, 0, 90},
    };
    for (const auto& testCase : cases) {
        EXPECT_EQ(shownRotation(testCase.rotate), testCase.shown) << testCase.rotate;
        EXPECT_EQ(rotationTurnedRight(testCase.rotate), testCase.turned) << testCase.rotate;
    }
}

TEST(SplitPdfTest, PageFilesAreNumberedToSortInPageOrder)
{
    const struct {
        int page;
        int count;
        const char* name;
    } cases[] = {
        {1, 1, "Page 001.pdf"},       {12, 40, "Page 012.pdf"},       {999, 999, "Page 999.pdf"},
        {7, 1000, "Page 0007.pdf"},   {10000, 10000, "Page 10000.pdf"},
    };
    for (const auto& testCase : cases)
        EXPECT_EQ(splitPageFileName(testCase.page, testCase.count), QString::fromLatin1(testCase.name));
}

TEST_F(PageToolsTest, RotateTurnsEveryPageRightInheritedRotationIncluded)
{
    TestPdf spec = pagesOfText(5);
    const int own[] = {0, 90, 270, 0, -90};
    for (int index = 0; index < 5; ++index)
        spec.pages[index].rotate = own[index];
    writeTestPdf(path(QStringLiteral("plain.pdf")), spec);
    {
        // Pages 1 and 4 have no /Rotate of their own: they inherit the page tree's 180.
        QPDF pdf;
        pdf.processFile(QFile::encodeName(path(QStringLiteral("plain.pdf"))).constData());
        pdf.getRoot().getKey("/Pages").replaceKey("/Rotate", QPDFObjectHandle::newInteger(180));
        QPDFWriter writer(pdf, QFile::encodeName(path(QStringLiteral("Scan.pdf"))).constData());
        writer.write();
    }
    ASSERT_EQ(pageRotations(path(QStringLiteral("Scan.pdf"))), (QList<int>{180, 90, 270, 180, 270}));

    const JobReport report = run("pdf.rotate", path(QStringLiteral("Scan.pdf")));
    ASSERT_TRUE(report.succeeded) << report.message.toStdString();
    EXPECT_EQ(report.results, QStringList{path(QStringLiteral("Scan Rotated.pdf"))});
    EXPECT_EQ(pageRotations(report.results.value(0)), (QList<int>{270, 180, 0, 270, 0}));
    EXPECT_TRUE(qpdfCheckPasses(report.results.value(0)));
    EXPECT_EQ(pdfToText(report.results.value(0)).count(QStringLiteral("Page ")), 5);
}

TEST_F(PageToolsTest, SplitWritesEveryPageAsItsOwnPdfInAFolder)
{
    const int pages = 40;  // enough for the pages to be shared out to threads
    const QString source = writeTestPdf(path(QStringLiteral("Report.pdf")), pagesOfText(pages));
    const JobReport report = run("pdf.split", source);
    ASSERT_TRUE(report.succeeded) << report.message.toStdString();
    const QString pagesFolder = path(QStringLiteral("Report Pages"));
    EXPECT_EQ(report.results, QStringList{pagesFolder});

    QStringList expected;
    for (int page = 1; page <= pages; ++page)
        expected.append(QStringLiteral("Page %1.pdf").arg(page, 3, 10, QLatin1Char('0')));
    ASSERT_EQ(folderEntries(pagesFolder), expected);
    for (int page = 1; page <= pages; ++page) {
        const QString file = pagesFolder + u'/' + expected[page - 1];
        EXPECT_EQ(pdfPageCount(file), 1) << file.toStdString();
        EXPECT_EQ(pdfToText(file).trimmed(), QStringLiteral("Page %1").arg(page)) << file.toStdString();
    }
    EXPECT_TRUE(qpdfCheckPasses(pagesFolder + QStringLiteral("/Page 040.pdf")));
}

TEST_F(PageToolsTest, SplitKeepsOnlyWhatEachPageUses)
{
    writeSharedResourcesPdf(path(QStringLiteral("Shared.pdf")));
    const JobReport report = run("pdf.split", path(QStringLiteral("Shared.pdf")));
    ASSERT_TRUE(report.succeeded) << report.message.toStdString();
    const char* faces[] = {"Helvetica", "Times-Roman", "Courier"};
    for (int page = 1; page <= 3; ++page) {
        const QString file = report.results.value(0) + QStringLiteral("/Page %1.pdf").arg(page, 3, 10, QLatin1Char('0'));
        const QString fonts = toolOutput(QStringLiteral("pdffonts"), {file});
        for (int face = 0; face < 3; ++face)
            EXPECT_EQ(fonts.contains(QString::fromLatin1(faces[face])), face == page - 1) << page << fonts.toStdString();
        // The link to page 3 doesn't bring page 3 along.
        EXPECT_EQ(pageObjectCount(file), 1) << page;
        EXPECT_EQ(pdfToText(file).trimmed(), QStringLiteral("Page %1").arg(page));
    }
}

TEST_F(PageToolsTest, SplitReportsEveryPageAndStopsBetweenPagesWhenCancelled)
{
    const int pages = 60;
    const QString source = writeTestPdf(path(QStringLiteral("Long.pdf")), pagesOfText(pages));
    const struct {
        int cancelAfter;  // pages written before the job is cancelled; -1: never
    } cases[] = {{-1}, {0}, {5}};
    for (const auto& testCase : cases) {
        const QString output = path(QStringLiteral("out%1").arg(testCase.cancelAfter));
        ASSERT_TRUE(QDir().mkpath(output));
        auto cancelled = std::make_shared<std::atomic_bool>(testCase.cancelAfter == 0);
        std::atomic_int reports{0};
        std::atomic<double> last{0};
        const OperationContext context(
            path(QStringLiteral("scratch")),
            [&](double fraction) {
                last = fraction;
                if (++reports == testCase.cancelAfter)
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
        if (testCase.cancelAfter < 0) {
            EXPECT_FALSE(wasCancelled);
            EXPECT_EQ(written, pages);
            EXPECT_EQ(reports.load(), pages);
            EXPECT_EQ(last.load(), 1.0);
        } else {
            EXPECT_TRUE(wasCancelled) << testCase.cancelAfter;
            // Each thread finishes the page in hand, no more.
            EXPECT_GE(written, testCase.cancelAfter);
            EXPECT_LE(written, testCase.cancelAfter + QThread::idealThreadCount());
        }
    }
}

// A file the entries can't read gives the opening message, and nothing lands beside it.
TEST_F(PageToolsTest, BadInputsSayWhyAndLeaveNothingBehind)
{
    writeTestPdf(path(QStringLiteral("Locked.pdf")), {.userPassword = QStringLiteral("open sesame")});
    startVips();
    void* jpeg = nullptr;
    size_t jpegSize = 0;
    vips::VImage::black(32, 32).write_to_buffer(".jpg", &jpeg, &jpegSize);
    writeFile(path(QStringLiteral("Photo.pdf")), QByteArray(static_cast<const char*>(jpeg), qsizetype(jpegSize)));
    g_free(jpeg);
    writeFile(path(QStringLiteral("Cut.pdf")), readFile(writeTestPdf(path(QStringLiteral("whole")), pagesOfText(2))).left(300));
    QFile::remove(path(QStringLiteral("whole")));
    const QStringList before = folderEntries(folder.path());

    const QJsonObject password{{QStringLiteral("password"), QStringLiteral("pw")}};
    const QString locked = QStringLiteral("This PDF is password-protected");
    const QString unreadable = QStringLiteral("Can't open this PDF");
    const struct {
        const char* entry;
        const char* file;
        QString message;
    } cases[] = {
        {"pdf.split", "Locked.pdf", locked},     {"pdf.split", "Photo.pdf", unreadable},
        {"pdf.split", "Cut.pdf", unreadable},    {"pdf.rotate", "Locked.pdf", locked},
        {"pdf.rotate", "Photo.pdf", unreadable}, {"pdf.password", "Locked.pdf", locked},
        {"pdf.password", "Photo.pdf", unreadable},
    };
    for (const auto& testCase : cases) {
        const JobReport report = run(testCase.entry, path(QString::fromLatin1(testCase.file)), password);
        EXPECT_FALSE(report.succeeded) << testCase.entry << " " << testCase.file;
        EXPECT_EQ(report.failures.value(0).message, testCase.message) << testCase.entry << " " << testCase.file;
    }
    EXPECT_EQ(folderEntries(folder.path()), before);
}
