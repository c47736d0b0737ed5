#include "PicturePdfs.h"
#include "TestPdfs.h"
#include "imaging/ImagingOperations.h"
#include "imaging/TestPictures.h"
#include "operations/OperationCatalog.h"
#include "operations/settings/SettingsStore.h"
#include "support/JobHarness.h"
#include "support/TestEnvironment.h"

#include <QFile>
#include <QFileInfo>
#include <QJsonObject>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <cmath>

using namespace wendrel;
using namespace wendrel::test;
using vips::VImage;

namespace {

class PdfCompressTest : public ::testing::Test {
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

    JobReport run(const QString& file, const QJsonObject& answers)
    {
        return runJob(runner, {.operation = catalog.find(QStringLiteral("pdf.compress")), .paths = {file}, .answers = answers});
    }

    // The result of compressing `file` with these answers, which must succeed.
    QString compressed(const QString& file, const QJsonObject& answers)
    {
        const JobReport report = run(file, answers);
        EXPECT_TRUE(report.succeeded) << report.message.toStdString();
        const QString result = report.results.value(0);
        EXPECT_TRUE(qpdfCheckPasses(result)) << result.toStdString();
        return result;
    }

    QTemporaryDir folder;
    OperationCatalog catalog;
    JobRunner runner;
};

QJsonObject atQuality(const char* level)
{
    return {{QStringLiteral("mode"), QStringLiteral("quality")}, {QStringLiteral("quality"), QString::fromUtf8(level)}};
}

QJsonObject toSize(double megabytes)
{
    return {{QStringLiteral("mode"), QStringLiteral("targetSize")}, {QStringLiteral("targetMB"), megabytes}};
}

// A photo of 1200 × 900 pixels drawn 4 × 3 inches: each level keeps the pixels it needs there.
TEST_F(PdfCompressTest, EachLevelStoresThePhotoAtItsResolutionAndKeepsTheText)
{
    const QString source = writePicturePdf(path(QStringLiteral("Photo.pdf")), {.pictures = {{.pixels = photoLike(1200, 900)}}});
    const struct {
        const char* level;
        const char* picture;
    } levels[] = {
        {"high", "image 800x600 rgb jpeg"},
        {"balanced", "image 600x450 rgb jpeg"},
        {"small", "image 320x240 rgb jpeg"},
    };
    qint64 previousSize = QFileInfo(source).size();
    for (const auto& level : levels) {
        const QString result = compressed(source, atQuality(level.level));
        EXPECT_EQ(QFileInfo(result).fileName(), u"Photo Compressed.pdf");
        EXPECT_EQ(pictureList(result), QStringList{QString::fromUtf8(level.picture)}) << level.level;
        EXPECT_LT(QFileInfo(result).size(), previousSize) << level.level << " is smaller than the level before";
        previousSize = QFileInfo(result).size();
        EXPECT_EQ(pdfToText(result).trimmed(), u"Words stay words");
        QFile::remove(result);
    }
}

// Where a picture is drawn decides its pixels: through forms, turned, drawn twice (the larger
// counts); grey and losslessly stored pictures become JPEG too. All at the balanced level.
TEST_F(PdfCompressTest, PicturesFollowTheirPlacementsAndKeepTheirColourSpace)
{
    const VImage photo = photoLike(1200, 900);
    const struct {
        const char* what;
        QList<TestPicture> pictures;
        QStringList expected;
    } cases[] = {
        {"in a form that doubles it", {{.pixels = photo, .drawn = QStringLiteral("144 0 0 108 72 400"), .formMatrix = QStringLiteral("2 0 0 2 0 0")}},
         {QStringLiteral("image 600x450 rgb jpeg")}},
        {"turned a quarter", {{.pixels = photo, .drawn = QStringLiteral("0 288 -216 0 400 100")}}, {QStringLiteral("image 600x450 rgb jpeg")}},
        {"drawn large, then small", {{.pixels = photo, .drawnAgain = QStringLiteral("72 0 0 54 0 0")}},
         {QStringLiteral("image 600x450 rgb jpeg"), QStringLiteral("image 600x450 rgb jpeg")}},
        {"grey, deflated", {{.pixels = photo[1], .jpeg = false}}, {QStringLiteral("image 600x450 gray jpeg")}},
        {"with a soft mask", {{.pixels = photo, .softMask = true}},
         {QStringLiteral("image 600x450 rgb jpeg"), QStringLiteral("smask 1200x900 gray image")}},
    };
    for (const auto& testCase : cases) {
        const QString source = writePicturePdf(path(QStringLiteral("Placed.pdf")), {.pictures = testCase.pictures});
        const QString result = compressed(source, atQuality("balanced"));
        EXPECT_EQ(pictureList(result), testCase.expected) << testCase.what;
        QFile::remove(result);
    }
}

// CMYK pictures, stored deflated or as JPEG (inverted, with an Adobe marker), look the same
// after compression as before.
TEST_F(PdfCompressTest, CmykPicturesKeepTheirColours)
{
    // Four inks in bands across a textured picture, so that JPEG has something to gain.
    const VImage xy = VImage::xyz(800, 600);
    const VImage texture = (xy[0] * 7.0).sin() * 20.0 + (xy[1] * 5.0).sin() * 20.0;
    const VImage inks = asCmyk(VImage::bandjoin({xy[0] / 4.0 + texture, xy[1] / 3.0 + 30.0, 220.0 - xy[0] / 5.0 + texture,
                                                 xy[1] / 10.0 + 10.0})
                                   .cast(VIPS_FORMAT_UCHAR));
    for (const bool jpeg : {false, true}) {
        // The picture fills the page, 3.25 × 2.4375 inches: 488 × 366 pixels at 150 per inch.
        const QString source = writePicturePdf(path(QStringLiteral("Inks.pdf")),
                                               {.pictures = {{.pixels = inks, .jpeg = jpeg, .drawn = QStringLiteral("234 0 0 175.5 0 0")}},
                                                .width = 234, .height = 175.5, .text = {}});
        const QString result = compressed(source, atQuality("balanced"));
        EXPECT_EQ(pictureList(result), QStringList{QStringLiteral("image 488x366 cmyk jpeg")}) << jpeg;
        const std::vector<double> before = renderedMeans(source);
        const std::vector<double> after = renderedMeans(result);
        ASSERT_EQ(before.size(), 3u);
        ASSERT_EQ(after.size(), 3u);
        for (int band = 0; band < 3; ++band)
            EXPECT_NEAR(after[band], before[band], 3.0) << "band " << band << (jpeg ? " from JPEG" : " from samples");
        QFile::remove(result);
    }
}

// A document without pictures is never made larger, and its text stays.
TEST_F(PdfCompressTest, ATextDocumentNeverGrows)
{
    const QString source = writeTestPdf(path(QStringLiteral("Text.pdf")), pagesOfText(30));
    for (const QJsonObject& answers : {atQuality("high"), toSize(0)}) {
        const QString result = compressed(source, answers);
        EXPECT_LE(QFileInfo(result).size(), QFileInfo(source).size());
        EXPECT_EQ(pdfToText(result), pdfToText(source));
        QFile::remove(result);
    }
}

// A target size takes the first level of the ladder that fits, or the smallest.
TEST_F(PdfCompressTest, ATargetSizeTakesTheFirstLevelThatFits)
{
    const QString source = writePicturePdf(path(QStringLiteral("Photo.pdf")), {.pictures = {{.pixels = photoLike(1200, 900)}}});
    const struct {
        double megabytes;
        const char* picture;
    } cases[] = {
        {100, "image 800x600 rgb jpeg"},  // the first level fits
        {0, "image 240x180 rgb jpeg"},    // nothing fits: the smallest, at 60 per inch
    };
    for (const auto& testCase : cases) {
        const QString result = compressed(source, toSize(testCase.megabytes));
        EXPECT_EQ(pictureList(result), QStringList{QString::fromUtf8(testCase.picture)}) << testCase.megabytes;
        QFile::remove(result);
    }
}

// Saved as pictures, pages keep the size and shape they are seen at, and their text is gone.
TEST_F(PdfCompressTest, PagesSavedAsPicturesKeepTheirShapeAndLoseTheirText)
{
    const TestPdf pages{.pages = {TestPage{.text = QStringLiteral("Upright words")},
                                  TestPage{.rotate = 90, .text = QStringLiteral("Turned words")}}};
    const QString source = writeTestPdf(path(QStringLiteral("Pages.pdf")), pages);
    QJsonObject answers = atQuality("balanced");
    answers.insert(QStringLiteral("rasterize"), true);
    const QString result = compressed(source, answers);
    EXPECT_EQ(pageSizes(source), (QStringList{QStringLiteral("612 x 792 pts, 0"), QStringLiteral("612 x 792 pts, 90")}));
    EXPECT_EQ(pageSizes(result), (QStringList{QStringLiteral("612 x 792 pts, 0"), QStringLiteral("792 x 612 pts, 0")}));
    EXPECT_EQ(pictureList(result), (QStringList{QStringLiteral("image 1275x1650 rgb jpeg"), QStringLiteral("image 1650x1275 rgb jpeg")}));
    EXPECT_TRUE(pdfToText(source).contains(u"Turned words"));
    EXPECT_EQ(pdfToText(result).trimmed(), QString());
}

// What can't be compressed fails with its reason and leaves nothing beside it; a picture that
// doesn't decode is left as it is while the rest is compressed.
TEST_F(PdfCompressTest, BadInputsFailCleanlyAndDamagedPicturesStayAsTheyAre)
{
    const QByteArray whole = readFile(writePicturePdf(path(QStringLiteral("whole.pdf")), {.pictures = {{.pixels = photoLike(600, 450)}}}));
    QFile::remove(path(QStringLiteral("whole.pdf")));
    writeFile(path(QStringLiteral("Truncated.pdf")), whole.left(whole.size() / 3));
    writeFile(path(QStringLiteral("Not a PDF.pdf")), QByteArray("%PDF-1.7\nnothing here\n"));
    writeTestPdf(path(QStringLiteral("Locked.pdf")), {.userPassword = QStringLiteral("secret")});

    const struct {
        const char* file;
        const char* message;
    } cases[] = {
        {"Truncated.pdf", "Can't open this PDF"},
        {"Not a PDF.pdf", "Can't open this PDF"},
        {"Locked.pdf", "This PDF is password-protected"},
    };
    for (const auto& testCase : cases) {
        const QStringList before = folderEntries(folder.path());
        const JobReport report = run(path(QString::fromUtf8(testCase.file)), atQuality("balanced"));
        EXPECT_FALSE(report.succeeded) << testCase.file;
        EXPECT_EQ(report.message, QString::fromUtf8(testCase.message)) << testCase.file;
        EXPECT_EQ(folderEntries(folder.path()), before) << testCase.file;
    }

    // The JPEG's second half replaced by noise: the picture can't be decoded whole.
    QByteArray damaged = whole;
    const qsizetype jpegStart = damaged.indexOf("\xff\xd8\xff");
    ASSERT_GT(jpegStart, 0);
    for (qsizetype i = jpegStart + 2000; i < jpegStart + 6000; ++i)
        damaged[i] = char(i * 7919 % 251);
    writeFile(path(QStringLiteral("Damaged picture.pdf")), damaged);
    const QString result = compressed(path(QStringLiteral("Damaged picture.pdf")), atQuality("small"));
    EXPECT_EQ(pictureList(result), QStringList{QStringLiteral("image 600x450 rgb jpeg")});
}

}  // namespace
