#include "imaging/pdf/PdfToPictures.h"

#include "MarkedPdfs.h"
#include "TestPdfs.h"
#include "operations/JobRunner.h"
#include "operations/OperationCatalog.h"
#include "operations/OperationError.h"
#include "support/JobHarness.h"
#include "support/TestEnvironment.h"

#include <QDir>
#include <QDirIterator>
#include <QThread>
#include <QTemporaryDir>

#include <vips/vips8>

#include <gtest/gtest.h>

using namespace wendrel;
using namespace wendrel::test;
using vips::VImage;

namespace {

TEST(PagePictureNameTest, PagesAreNumberedWithThreeDigitsOrMore)
{
    const struct {
        int page;
        const char* extension;
        const char* expected;
    } cases[] = {{1, "jpg", "Page 001.jpg"}, {42, "png", "Page 042.png"}, {999, "jpg", "Page 999.jpg"},
                 {1000, "jpg", "Page 1000.jpg"}, {12345, "png", "Page 12345.png"}};
    for (const auto& c : cases)
        EXPECT_EQ(pagePictureName(c.page, QString::fromUtf8(c.extension)), QString::fromUtf8(c.expected));
}

class PdfToPicturesTest : public ::testing::Test {
protected:
    void SetUp() override { registerPdfToPictures(catalog); }
    void TearDown() override { EXPECT_TRUE(leftoverScratchFolders().isEmpty()); }

    QString path(const QString& name) const { return folder.filePath(name); }

    JobReport run(const char* id, const QString& file)
    {
        const FileOperationPtr entry = catalog.find(QString::fromUtf8(id));
        if (!entry) {
            ADD_FAILURE() << "no entry " << id;
            return {};
        }
        return runJob(runner, entry, {file});
    }

    QTemporaryDir folder;
    OperationCatalog catalog;
    JobRunner runner;
};

// What libvips' loaders make of a written picture: its loader, then its size.
QString describe(const QString& file)
{
    const VImage image = VImage::new_from_file(QFile::encodeName(file).constData());
    return QStringLiteral("%1 %2x%3").arg(QString::fromUtf8(image.get_string("vips-loader")))
        .arg(image.width())
        .arg(image.height());
}

TEST_F(PdfToPicturesTest, OnePageGivesOnePictureBesideTheDocument)
{
    const QString pdf = writeMarkedPdf(path(QStringLiteral("Flyer.pdf")), {.pages = {{{0, 0, 288, 144}}}});
    const struct {
        const char* id;
        const char* name;
        const char* described;
    } cases[] = {{"pdf.png", "Flyer.png", "pngload 1200x600"}, {"pdf.jpg", "Flyer.jpg", "jpegload 1200x600"}};
    for (const auto& c : cases) {
        const JobReport report = run(c.id, pdf);
        ASSERT_TRUE(report.succeeded) << c.id << ": " << report.message.toStdString();
        ASSERT_EQ(report.results, QStringList{path(QString::fromUtf8(c.name))});
        EXPECT_EQ(describe(report.results.first()), QString::fromUtf8(c.described));
        // Decoded back: the red mark where the page has it, white across from it.
        const VImage picture = VImage::new_from_file(QFile::encodeName(report.results.first()).constData());
        const std::vector<double> mark = picture.getpoint(30, 570), blank = picture.getpoint(1170, 30);
        EXPECT_GT(mark[0], 200);
        EXPECT_LT(mark[1], 60);
        EXPECT_GT(blank[0] + blank[1] + blank[2], 3 * 250);
        EXPECT_NEAR(picture.xres() * 25.4, 300, 1);
    }
}

TEST_F(PdfToPicturesTest, SeveralPagesGoIntoAFolderNamedAfterTheDocument)
{
    TestPdf spec = pagesOfText(3);
    spec.pages[1].rotate = 90;
    const QString pdf = writeTestPdf(path(QStringLiteral("Report.pdf")), spec);
    const QStringList before = folderEntries(folder.path());
    for (const char* id : {"pdf.jpg", "pdf.png"}) {
        const JobReport report = run(id, pdf);
        ASSERT_TRUE(report.succeeded) << id << ": " << report.message.toStdString();
        const QString pages = path(QStringLiteral("Report"));
        ASSERT_EQ(report.results, QStringList{pages});
        const QString extension = QString::fromUtf8(id).section(u'.', 1);
        const QString loader = extension == u"jpg" ? QStringLiteral("jpegload") : QStringLiteral("pngload");
        EXPECT_EQ(folderEntries(pages), QStringList({QStringLiteral("Page 001."), QStringLiteral("Page 002."),
                                                     QStringLiteral("Page 003.")})
                                            .replaceInStrings(QStringLiteral("."), QStringLiteral(".") + extension));
        const auto picture = [&](const char* name) { return QDir(pages).filePath(QString::fromUtf8(name) + extension); };
        EXPECT_EQ(describe(picture("Page 001.")), loader + QStringLiteral(" 2550x3300"));
        EXPECT_EQ(describe(picture("Page 002.")), loader + QStringLiteral(" 3300x2550"));
        // The page's text is drawn: dark pixels where "Page 3" is written, an inch from the
        // lower-left corner.
        const VImage third = VImage::new_from_file(QFile::encodeName(picture("Page 003.")).constData());
        EXPECT_LT(third.crop(300, 2700, 600, 300).min(), 100);
        QDir(pages).removeRecursively();
    }
    EXPECT_EQ(folderEntries(folder.path()), before);
}

TEST_F(PdfToPicturesTest, BadDocumentsFailWithTheirMessageAndLeaveNothing)
{
    const QByteArray whole = readFile(writeTestPdf(path(QStringLiteral("whole.pdf")), pagesOfText(3)));
    writeFile(path(QStringLiteral("truncated.pdf")), whole.left(whole.size() / 3));
    writeTestPdf(path(QStringLiteral("locked.pdf")), {.userPassword = QStringLiteral("secret")});
    void* jpeg = nullptr;
    size_t jpegSize = 0;
    VImage::black(16, 16).write_to_buffer(".jpg", &jpeg, &jpegSize);
    writeFile(path(QStringLiteral("photo.pdf")), QByteArray(static_cast<const char*>(jpeg), qsizetype(jpegSize)));
    g_free(jpeg);
    writeMarkedPdf(path(QStringLiteral("wall.pdf")), {.pages = {{}, {{0, 0, 14400, 14400}}}});

    const QStringList before = folderEntries(folder.path());
    const struct {
        const char* file;
        const char* message;
    } cases[] = {{"truncated.pdf", "Can't open this PDF"},
                 {"locked.pdf", "This PDF is password-protected"},
                 {"photo.pdf", "Can't open this PDF"},
                 {"wall.pdf", "Page is too large"}};
    for (const char* id : {"pdf.jpg", "pdf.png"}) {
        for (const auto& c : cases) {
            const QString file = path(QString::fromUtf8(c.file));
            const QByteArray original = readFile(file);
            const JobReport report = run(id, file);
            EXPECT_FALSE(report.succeeded) << id << " " << c.file;
            EXPECT_EQ(report.message, QString::fromUtf8(c.message)) << id << " " << c.file;
            EXPECT_EQ(readFile(file), original) << c.file;
        }
    }
    EXPECT_EQ(folderEntries(folder.path()), before);
}

// Cancelling stops the workers between pages: each finishes at most the page it is drawing.
TEST_F(PdfToPicturesTest, CancellingStopsBetweenPages)
{
    const QString pdf = writeTestPdf(path(QStringLiteral("Long.pdf")), pagesOfText(24));
    QTemporaryDir scratch;
    auto cancelled = std::make_shared<std::atomic_bool>(false);
    const OperationContext context(scratch.path(), [cancelled](double) { *cancelled = true; }, cancelled);
    const FileOperationPtr entry = catalog.find(QStringLiteral("pdf.png"));
    ASSERT_TRUE(entry);
    EXPECT_THROW(entry->run({pdf}, context), OperationCancelled);
    int written = 0;
    QDirIterator pictures(scratch.path(), {QStringLiteral("*.png")}, QDir::Files, QDirIterator::Subdirectories);
    while (pictures.hasNext()) {
        pictures.next();
        ++written;
    }
    EXPECT_GE(written, 1);
    EXPECT_LE(written, 1 + QThread::idealThreadCount());
}

}  // namespace
