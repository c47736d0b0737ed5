#include "imaging/VipsRuntime.h"
#include "imaging/pdf/PdfDocument.h"

#include "TestPdfs.h"
#include "imaging/TestPictures.h"
#include "operations/OperationError.h"
#include "support/TestEnvironment.h"

#include <qpdf/QPDFPageDocumentHelper.hh>

using namespace wendrel;
using namespace wendrel::test;

namespace {

QString openingMessage(const QString& path)
{
    try {
        return QStringLiteral("opened with %1 pages").arg(QPDFPageDocumentHelper(*openPdf(path)).getAllPages().size());
    } catch (const OperationError& error) {
        return error.message();
    }
}

using PdfDocumentTest = PdfEntryTest;

// Every kind of file the PDF entries meet, whole or not: what opening it says, and that each
// entry fails on a bad one with its exact message, leaving it as it was and nothing beside it.
TEST_F(PdfDocumentTest, OpensWholeAndRepairableFilesAndEveryEntryNamesWhyOthersFail)
{
    const QByteArray whole = readFile(writeTestPdf(path("whole.pdf"), pagesOfText(3)));
    QByteArray brokenTable = whole;  // wrong offsets in the cross-reference table: qpdf finds the objects by scanning
    for (qsizetype i = brokenTable.lastIndexOf("xref") + 10; i < brokenTable.size() && brokenTable[i] != 't'; ++i)
        brokenTable[i] = brokenTable[i] >= '0' && brokenTable[i] <= '9' ? '7' : brokenTable[i];
    writeFile(path("broken-table.pdf"), brokenTable);
    writeFile(path("truncated.pdf"), whole.left(40));
    writeFile(path("cut.pdf"), whole.left(whole.size() / 3));
    startVips();
    save(vips::VImage::black(32, 32), path("photo.jpg"));
    QFile::rename(path("photo.jpg"), path("photo.pdf"));
    writeFile(path("empty.pdf"), {});
    writeTestPdf(path("locked.pdf"), {.userPassword = QStringLiteral("open sesame")});
    writeTestPdf(path("no-pages.pdf"), {.pages = {}});
    // A page whose box has no area: it opens, but nothing can be drawn to its size.
    writeTestPdf(path("flat.pdf"), {.pages = {TestPage{.width = 612, .height = 0}}});

    const QList<const char*> every{"pdf.split", "pdf.rotate", "pdf.password", "pdf.number", "pdf.watermark"};
    const QString unreadable = QStringLiteral("Can't open this PDF"), locked = QStringLiteral("This PDF is password-protected");
    const struct {
        const char* file;
        QString opening;      // what openPdf says
        QList<const char*> failing;  // the entries that fail on it, each with `failure`
        QString failure;
    } cases[] = {
        {"whole.pdf", QStringLiteral("opened with 3 pages"), {}, {}},
        {"broken-table.pdf", QStringLiteral("opened with 3 pages"), {}, {}},
        {"flat.pdf", QStringLiteral("opened with 1 pages"), every.mid(3), QStringLiteral("Couldn't create the PDF")},
        {"truncated.pdf", unreadable, every, unreadable},
        {"cut.pdf", unreadable, every, unreadable},
        {"photo.pdf", unreadable, every, unreadable},
        {"empty.pdf", unreadable, every, unreadable},
        {"no-pages.pdf", unreadable, every, unreadable},
        {"missing.pdf", unreadable, {}, {}},
        {"locked.pdf", locked, every, locked},
    };
    const QStringList before = folderEntries(folder.path());
    for (const auto& testCase : cases) {
        const QString file = path(testCase.file);
        EXPECT_EQ(openingMessage(file), testCase.opening) << testCase.file;
        const QByteArray original = readFile(file);
        for (const char* entry : testCase.failing) {
            const JobReport report = run(entry, file, {{QStringLiteral("password"), QStringLiteral("pw")}});
            EXPECT_FALSE(report.succeeded) << entry << " " << testCase.file;
            ASSERT_EQ(report.failures.size(), 1) << entry << " " << testCase.file;
            EXPECT_EQ(report.failures.first().message, testCase.failure) << entry << " " << testCase.file;
            EXPECT_EQ(readFile(file), original) << entry << " " << testCase.file;
        }
    }
    EXPECT_EQ(folderEntries(folder.path()), before);
}

}  // namespace
