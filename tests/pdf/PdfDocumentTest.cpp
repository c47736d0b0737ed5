#include "imaging/pdf/PdfDocument.h"
#include "imaging/VipsRuntime.h"

#include "TestPdfs.h"
#include "operations/OperationError.h"
#include "support/TestEnvironment.h"

#include <QTemporaryDir>

#include <qpdf/QPDFPageDocumentHelper.hh>
#include <vips/vips8>

#include <gtest/gtest.h>

using namespace wendrel;
using namespace wendrel::test;

namespace {

QString openingMessage(const QString& path)
{
    try {
        const std::unique_ptr<QPDF> pdf = openPdf(path);
        return QStringLiteral("opened with %1 pages").arg(QPDFPageDocumentHelper(*pdf).getAllPages().size());
    } catch (const OperationError& error) {
        return error.message();
    }
}

// Every kind of file the PDF entries meet, whole or not, and what opening it says.
TEST(PdfDocumentTest, OpensWholeAndRepairableFilesAndNamesWhyOthersFail)
{
    QTemporaryDir folder;
    const auto path = [&](const char* name) { return folder.filePath(QString::fromLatin1(name)); };
    const QByteArray whole = readFile(writeTestPdf(path("whole.pdf"), pagesOfText(3)));

    // The cross-reference table's offsets are wrong: qpdf finds the objects by scanning.
    QByteArray brokenTable = whole;
    const qsizetype table = brokenTable.lastIndexOf("xref");
    for (qsizetype i = table + 10; i < brokenTable.size() && brokenTable[i] != 't'; ++i) {
        if (brokenTable[i] >= '0' && brokenTable[i] <= '9')
            brokenTable[i] = '7';
    }
    writeFile(path("broken-table.pdf"), brokenTable);
    writeFile(path("truncated.pdf"), whole.left(40));
    startVips();
    void* jpeg = nullptr;
    size_t jpegSize = 0;
    vips::VImage::black(32, 32).write_to_buffer(".jpg", &jpeg, &jpegSize);
    writeFile(path("photo.pdf"), QByteArray(static_cast<const char*>(jpeg), qsizetype(jpegSize)));
    g_free(jpeg);
    writeFile(path("empty.pdf"), {});
    writeTestPdf(path("locked.pdf"), {.userPassword = QStringLiteral("open sesame")});
    writeTestPdf(path("no-pages.pdf"), {.pages = {}});

    const struct {
        const char* file;
        QString expected;
    } cases[] = {
        {"whole.pdf", QStringLiteral("opened with 3 pages")},
        {"broken-table.pdf", QStringLiteral("opened with 3 pages")},
        {"truncated.pdf", QStringLiteral("Can't open this PDF")},
        {"photo.pdf", QStringLiteral("Can't open this PDF")},
        {"empty.pdf", QStringLiteral("Can't open this PDF")},
        {"no-pages.pdf", QStringLiteral("Can't open this PDF")},
        {"missing.pdf", QStringLiteral("Can't open this PDF")},
        {"locked.pdf", QStringLiteral("This PDF is password-protected")},
    };
    for (const auto& testCase : cases)
        EXPECT_EQ(openingMessage(path(testCase.file)), testCase.expected) << testCase.file;
}

}  // namespace
