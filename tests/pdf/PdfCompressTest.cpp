#include "PicturePdfs.h"
#include "TestPdfs.h"
#include "imaging/TestPictures.h"
#include "support/JobHarness.h"
#include "support/TestEnvironment.h"

#include <QFile>
#include <QFileInfo>
#include <QJsonObject>

#include <gtest/gtest.h>

using namespace wendrel;
using namespace wendrel::test;
using vips::VImage;
using namespace Qt::StringLiterals;

namespace {

class PdfCompressTest : public PdfEntryTest {
protected:
    // The result of compressing `file` with these answers, which must succeed, named after it
    // and whole for qpdf.
    QString compressed(const QString& file, const QJsonObject& answers)
    {
        const JobReport report = run("pdf.compress", file, answers);
        EXPECT_TRUE(report.succeeded) << report.message.toStdString();
        const QString result = report.results.value(0);
        EXPECT_EQ(result, path(QFileInfo(file).completeBaseName() + QStringLiteral(" Compressed.pdf")));
        EXPECT_TRUE(qpdfCheckPasses(result)) << result.toStdString();
        return result;
    }
};

QJsonObject atQuality(const char* level)
{
    return {{QStringLiteral("mode"), QStringLiteral("quality")}, {QStringLiteral("quality"), QString::fromUtf8(level)}};
}

QJsonObject toSize(double megabytes)
{
    return {{QStringLiteral("mode"), QStringLiteral("targetSize")}, {QStringLiteral("targetMB"), megabytes}};
}

qint64 sizeOf(const QString& file) { return QFileInfo(file).size(); }

// Each level keeps the pixels a picture needs where it is drawn (through forms, turned; drawn
// twice, the larger counts), as JPEG at the level's quality, in the picture's own colours: the
// page looks the same and its text stays. A target size takes the first level that fits, or
// the smallest. The photo is 1200 × 900 pixels, drawn 4 × 3 inches unless a row says otherwise.
TEST_F(PdfCompressTest, PicturesKeepThePixelsTheirLevelAndPlacementNeed)
{
    const VImage photo = photoLike(1200, 900);
    const PicturePdf plain{.pictures = {{.pixels = photo}}};
    // Four inks in bands across a textured picture that fills a page of 3.25 × 2.4375 inches:
    // 488 × 366 pixels at 150 per inch. The texture gives JPEG something to gain.
    const VImage xy = VImage::xyz(800, 600);
    const VImage texture = (xy[0] * 7.0).sin() * 20.0 + (xy[1] * 5.0).sin() * 20.0;
    const VImage inks = VImage::bandjoin({xy[0] / 4.0 + texture, xy[1] / 3.0 + 30.0, 220.0 - xy[0] / 5.0 + texture, xy[1] / 10.0 + 10.0})
                            .cast(VIPS_FORMAT_UCHAR)
                            .copy(VImage::option()->set("interpretation", VIPS_INTERPRETATION_CMYK));
    const auto inksFillingThePage = [&](bool jpeg) {
        return PicturePdf{
            .pictures = {{.pixels = inks, .jpeg = jpeg, .drawn = u"234 0 0 175.5 0 0"_s}}, .width = 234, .height = 175.5, .text = {}};
    };
    const QJsonObject balanced = atQuality("balanced");
    const struct {
        const char* what;
        PicturePdf pdf;
        QJsonObject answers;
        const char* pictures;  // as pdfimages lists them, " | " between two
        int quality;
    } cases[] = {
        {"high", plain, atQuality("high"), "image 800x600 rgb jpeg", 80},
        {"balanced", plain, balanced, "image 600x450 rgb jpeg", 65},
        {"small", plain, atQuality("small"), "image 320x240 rgb jpeg", 35},
        {"a target the first level fits", plain, toSize(100), "image 800x600 rgb jpeg", 80},
        {"a target nothing fits: the smallest level, 60 per inch", plain, toSize(0), "image 240x180 rgb jpeg", 25},
        {"in a form that doubles it", {.pictures = {{.pixels = photo, .drawn = u"144 0 0 108 72 400"_s, .formMatrix = u"2 0 0 2 0 0"_s}}},
         balanced, "image 600x450 rgb jpeg", 65},
        {"turned a quarter", {.pictures = {{.pixels = photo, .drawn = u"0 288 -216 0 400 100"_s}}}, balanced, "image 600x450 rgb jpeg", 65},
        {"drawn large, then small", {.pictures = {{.pixels = photo, .drawnAgain = u"72 0 0 54 0 0"_s}}}, balanced,
         "image 600x450 rgb jpeg | image 600x450 rgb jpeg", 65},
        {"grey, deflated", {.pictures = {{.pixels = photo[1], .jpeg = false}}}, balanced, "image 600x450 gray jpeg", 65},
        {"with a soft mask", {.pictures = {{.pixels = photo, .softMask = true}}}, balanced,
         "image 600x450 rgb jpeg | smask 1200x900 gray image", 65},
        {"CMYK, deflated", inksFillingThePage(false), balanced, "image 488x366 cmyk jpeg", 65},
        {"CMYK JPEG (inverted, with an Adobe marker)", inksFillingThePage(true), balanced, "image 488x366 cmyk jpeg", 65},
    };
    std::vector<qint64> sizes;
    for (const auto& testCase : cases) {
        const QString source = writePicturePdf(path(u"Photo.pdf"_s), testCase.pdf);
        const QString result = compressed(source, testCase.answers);
        const QString pictures = pictureList(result).join(u" | "_s);
        EXPECT_EQ(pictures, QString::fromUtf8(testCase.pictures)) << testCase.what;
        EXPECT_EQ(jpegQualities(result), QList<int>(pictures.count(u"jpeg"_s), testCase.quality)) << testCase.what;
        EXPECT_LT(sizeOf(result), sizeOf(source)) << testCase.what;
        EXPECT_EQ(pdfToText(result), pdfToText(source)) << testCase.what;
        const std::vector<double> before = renderedMeans(source);
        const std::vector<double> after = renderedMeans(result);
        ASSERT_EQ(before.size(), 3u);
        ASSERT_EQ(after.size(), 3u);
        for (int band = 0; band < 3; ++band)
            EXPECT_NEAR(after[band], before[band], 3.0) << testCase.what << ", band " << band;
        sizes.push_back(sizeOf(result));
        QFile::remove(result);
    }
    EXPECT_GT(sizes[0], sizes[1]) << "balanced is smaller than high";
    EXPECT_GT(sizes[1], sizes[2]) << "small is smaller than balanced";
}

// A document without pictures is never made larger, and its text stays.
TEST_F(PdfCompressTest, ATextDocumentNeverGrows)
{
    const QString source = writeTestPdf(path(QStringLiteral("Text.pdf")), pagesOfText(30));
    for (const QJsonObject& answers : {atQuality("high"), toSize(0)}) {
        const QString result = compressed(source, answers);
        EXPECT_LE(sizeOf(result), sizeOf(source));
        EXPECT_EQ(pdfToText(result), pdfToText(source));
        QFile::remove(result);
    }
}

// Saved as pictures, pages keep the size and shape they are seen at, and their text is gone.
TEST_F(PdfCompressTest, PagesSavedAsPicturesKeepTheirShapeAndLoseTheirText)
{
    const TestPdf pages{.pages = {TestPage{}, TestPage{.rotate = 90}}};
    QJsonObject answers = atQuality("balanced");
    answers.insert(QStringLiteral("rasterize"), true);
    const QString result = compressed(writeTestPdf(path(QStringLiteral("Pages.pdf")), pages), answers);
    EXPECT_EQ(pdfPageSizes(result), (QList<QSizeF>{{612, 792}, {792, 612}}));
    EXPECT_EQ(pdfPageRotations(result), (QList<int>{0, 0})) << "the pages are drawn turned, not turned again";
    EXPECT_EQ(pictureList(result), (QStringList{QStringLiteral("image 1275x1650 rgb jpeg"), QStringLiteral("image 1650x1275 rgb jpeg")}));
    EXPECT_EQ(jpegQualities(result), (QList<int>{65, 65}));
    EXPECT_EQ(pdfToText(result).trimmed(), QString());
}

// What can't be compressed fails with its reason and leaves nothing beside it; a picture that
// doesn't decode is left as it is while the rest is compressed.
TEST_F(PdfCompressTest, BadInputsFailCleanlyAndDamagedPicturesStayAsTheyAre)
{
    for (const BadPdf& bad : writeBadPdfs(folder.path())) {
        const QStringList before = folderEntries(folder.path());
        const JobReport report = run("pdf.compress", bad.path, atQuality("balanced"));
        EXPECT_FALSE(report.succeeded) << bad.path.toStdString();
        EXPECT_EQ(report.message, bad.message) << bad.path.toStdString();
        EXPECT_EQ(folderEntries(folder.path()), before) << bad.path.toStdString();
    }

    // The JPEG's second half replaced by noise: the picture can't be decoded whole.
    QByteArray damaged = readFile(writePicturePdf(path(QStringLiteral("Damaged.pdf")), {.pictures = {{.pixels = photoLike(600, 450)}}}));
    const qsizetype jpegStart = damaged.indexOf("\xff\xd8\xff");
    ASSERT_GT(jpegStart, 0);
    for (qsizetype i = jpegStart + 2000; i < jpegStart + 6000; ++i)
        damaged[i] = char(i * 7919 % 251);
    writeFile(path(QStringLiteral("Damaged.pdf")), damaged);
    EXPECT_EQ(pictureList(compressed(path(QStringLiteral("Damaged.pdf")), atQuality("small"))),
              QStringList{QStringLiteral("image 600x450 rgb jpeg")});
}

}  // namespace
