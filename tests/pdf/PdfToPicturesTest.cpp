#include "imaging/pdf/PdfToPictures.h"

#include "PicturePdfs.h"
#include "TestPdfs.h"
#include "operations/OperationError.h"
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
    for (const auto& [page, name] : {std::pair{1, "Page 001.png"}, {42, "Page 042.png"}, {999, "Page 999.png"}, {1000, "Page 1000.png"},
                                     {12345, "Page 12345.png"}})
        EXPECT_EQ(pagePictureName(page, QStringLiteral("png")), QString::fromUtf8(name));
}

using PdfToPicturesTest = PdfEntryTest;

// A written picture decoded back, and what libvips' loader made of it: "pngload 1200x600".
QString describe(const VImage& picture)
{
    return QStringLiteral("%1 %2x%3").arg(QString::fromUtf8(picture.get_string("vips-loader"))).arg(picture.width()).arg(picture.height());
}

VImage opened(const QString& file) { return VImage::new_from_file(QFile::encodeName(file).constData()); }

// One page gives one picture beside the document, several a folder named after it holding a
// picture per page: each page at 300 per inch, turned as it is seen, its marks and text where
// the page has them. Nothing else is left beside the document.
TEST_F(PdfToPicturesTest, PagesBecomePicturesBesideTheDocument)
{
    const QString flyer = writeMarkedPdf(path(QStringLiteral("Flyer.pdf")), {.pages = {{{0, 0, 288, 144}}}});
    TestPdf threePages = pagesOfText(3);
    threePages.pages[1].rotate = 90;
    const QString report = writeTestPdf(path(QStringLiteral("Report.pdf")), threePages);
    const QStringList before = folderEntries(folder.path());
    for (const QString& extension : {QStringLiteral("jpg"), QStringLiteral("png")}) {
        const QByteArray id = "pdf." + extension.toUtf8();
        const QString loader = extension == u"jpg" ? QStringLiteral("jpegload ") : QStringLiteral("pngload ");
        const JobReport one = run(id.constData(), flyer);
        ASSERT_TRUE(one.succeeded) << id.constData() << ": " << one.message.toStdString();
        ASSERT_EQ(one.results, QStringList{path(QStringLiteral("Flyer.") + extension)});
        const VImage picture = opened(one.results.first());
        EXPECT_EQ(describe(picture), loader + QStringLiteral("1200x600"));
        EXPECT_NEAR(picture.xres() * 25.4, 300, 1);
        const std::vector<double> mark = picture.getpoint(30, 570), blank = picture.getpoint(1170, 30);
        EXPECT_TRUE(mark[0] > 200 && mark[1] < 60) << id.constData();
        EXPECT_GT(blank[0] + blank[1] + blank[2], 3 * 250) << id.constData();

        const JobReport several = run(id.constData(), report);
        ASSERT_TRUE(several.succeeded) << id.constData() << ": " << several.message.toStdString();
        const QDir pages(path(QStringLiteral("Report")));
        ASSERT_EQ(several.results, QStringList{pages.path()});
        const QStringList names = QStringList{QStringLiteral("Page 001."), QStringLiteral("Page 002."), QStringLiteral("Page 003.")}
                                      .replaceInStrings(QStringLiteral("."), QStringLiteral(".") + extension);
        EXPECT_EQ(folderEntries(pages.path()), names);
        EXPECT_EQ(describe(opened(pages.filePath(names[0]))), loader + QStringLiteral("2550x3300"));
        EXPECT_EQ(describe(opened(pages.filePath(names[1]))), loader + QStringLiteral("3300x2550"));
        // Dark pixels where "Page 3" is written, an inch from the lower-left corner.
        EXPECT_LT(opened(pages.filePath(names[2])).crop(300, 2700, 600, 300).min(), 100);
        QFile::remove(one.results.first());
        QDir(pages).removeRecursively();
    }
    EXPECT_EQ(folderEntries(folder.path()), before);
}

TEST_F(PdfToPicturesTest, BadDocumentsFailWithTheirMessageAndLeaveNothing)
{
    QList<BadPdf> cases = writeBadPdfs(folder.path());
    const QString wall = writeMarkedPdf(path(QStringLiteral("Wall.pdf")), {.pages = {{}, {{0, 0, 14400, 14400}}}});
    cases.append({wall, QStringLiteral("Page is too large")});
    const QStringList before = folderEntries(folder.path());
    for (const char* id : {"pdf.jpg", "pdf.png"}) {
        for (const BadPdf& bad : cases) {
            const QByteArray original = readFile(bad.path);
            const JobReport report = run(id, bad.path);
            EXPECT_FALSE(report.succeeded) << id << " " << bad.path.toStdString();
            EXPECT_EQ(report.message, bad.message) << id << " " << bad.path.toStdString();
            EXPECT_EQ(readFile(bad.path), original) << bad.path.toStdString();
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
