#include "imaging/ImageFormat.h"
#include "imaging/ImagingOperations.h"

#include "TestPictures.h"
#include "operations/JobRunner.h"
#include "operations/OperationCatalog.h"
#include "operations/settings/CompressionSettings.h"
#include "operations/settings/FormatSettings.h"
#include "operations/settings/SettingsStore.h"
#include "support/JobHarness.h"
#include "support/TestEnvironment.h"

#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>

#include <gtest/gtest.h>

using namespace wendrel;
using namespace wendrel::test;
using vips::VImage;

namespace {

class ImageOperationsTest : public ::testing::Test {
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

    QString picture(const QString& name, const VImage& image, const QString& options = {})
    {
        save(image, path(name) + options);
        return path(name);
    }

    JobReport run(const char* id, const QStringList& files)
    {
        const FileOperationPtr entry = catalog.find(QString::fromUtf8(id));
        if (!entry) {
            ADD_FAILURE() << "no entry " << id;
            return {};
        }
        return runJob(runner, entry, files);
    }

    // The single result of a job that must succeed.
    QString result(const char* id, const QString& file)
    {
        const JobReport report = run(id, {file});
        EXPECT_TRUE(report.succeeded) << id << ": " << report.message.toStdString();
        return report.results.value(0);
    }

    QTemporaryDir folder;
    OperationCatalog catalog;
    JobRunner runner;
};

QString loaderOf(const QString& file)
{
    return toolOutput(QStringLiteral("vipsheader"), {QStringLiteral("-f"), QStringLiteral("vips-loader"), file}).trimmed();
}

// What exiftool finds of a tag; empty when the tag is absent.
QString exifTag(const QString& file, const char* tag)
{
    return toolOutput(QStringLiteral("exiftool"), {QStringLiteral("-s3"), QStringLiteral("-n"),
                                                    QStringLiteral("-") + QString::fromUtf8(tag), file})
        .trimmed();
}

}  // namespace

TEST_F(ImageOperationsTest, EveryFormatTargetWritesWhatItsNameSays)
{
    const QString source = picture(QStringLiteral("Holiday.png"), photoLike(160, 90));
    const std::map<ImageFormat, QString> loaders{
        {ImageFormat::jpeg, QStringLiteral("jpegload")}, {ImageFormat::png, QStringLiteral("pngload")},
        {ImageFormat::heic, QStringLiteral("heifload")}, {ImageFormat::webp, QStringLiteral("webpload")},
        {ImageFormat::avif, QStringLiteral("heifload")}, {ImageFormat::tiff, QStringLiteral("tiffload")},
        {ImageFormat::bmp, QStringLiteral("magickload")}, {ImageFormat::gif, QStringLiteral("gifload")},
        {ImageFormat::jxl, QStringLiteral("jxlload")}};
    int written = 0;
    for (const ImageTarget& target : imageTargets()) {
        if (!canWrite(target.format) || target.format == ImageFormat::png)
            continue;
        const QString id = QStringLiteral("image.") + target.extension;
        const QString output = result(qPrintable(id), source);
        EXPECT_EQ(QFileInfo(output).fileName(), QStringLiteral("Holiday.") + target.extension);
        const VImage back = decoded(output);
        EXPECT_EQ(back.width(), 160) << id.toStdString();
        EXPECT_EQ(back.height(), 90) << id.toStdString();
        EXPECT_EQ(loaderOf(output), loaders.at(target.format)) << id.toStdString();
        // Colours survive: lossy formats stay close to the source in the middle of the picture.
        EXPECT_NEAR(pixel(back, 80, 45)[0], pixel(photoLike(160, 90), 80, 45)[0], 20) << id.toStdString();
        ++written;
    }
    EXPECT_GE(written, 6) << "JPEG, TIFF, BMP, GIF, WebP and HEIC at least";
}

TEST_F(ImageOperationsTest, ImageTargetsSkipTheirOwnFormatAndNonRasterFiles)
{
    const QString png = picture(QStringLiteral("a.png"), photoLike(8, 8));
    const QString jpeg = picture(QStringLiteral("b.jpg"), photoLike(8, 8));
    writeFile(path(QStringLiteral("c.svg")), "<svg xmlns='http://www.w3.org/2000/svg' width='8' height='8'/>");
    writeFile(path(QStringLiteral("d.pdf")), "%PDF-1.4\n");
    const auto convertIds = [&](const QString& file) {
        QStringList ids;
        for (const FileOperationPtr& entry : catalog.fitting(RingKind::convert, {file}))
            ids.append(entry->id());
        return ids;
    };
    EXPECT_FALSE(convertIds(png).contains(u"image.png"));
    EXPECT_TRUE(convertIds(png).contains(u"image.jpg"));
    EXPECT_FALSE(convertIds(jpeg).contains(u"image.jpg"));
    EXPECT_TRUE(convertIds(path(QStringLiteral("c.svg"))).isEmpty());
    // A PDF has its own entries (pages as pictures), but no image entry takes it.
    EXPECT_TRUE(convertIds(path(QStringLiteral("d.pdf"))).filter(QStringLiteral("image.")).isEmpty());
    EXPECT_TRUE(catalog.fitting(RingKind::tools, {path(QStringLiteral("c.svg"))}).isEmpty());
}

TEST_F(ImageOperationsTest, TransparencyTurnsWhiteInJpegAndBmpButStaysElsewhere)
{
    const QString logo = picture(QStringLiteral("logo.png"), transparentDisc(64));
    for (const char* id : {"image.jpg", "image.bmp"}) {
        const VImage back = decoded(result(id, logo));
        EXPECT_EQ(back.bands(), 3) << id;
        EXPECT_GT(pixel(back, 1, 1)[0], 245) << id;
        EXPECT_GT(pixel(back, 1, 1)[2], 245) << id;
        EXPECT_GT(pixel(back, 32, 32)[1], 150) << id;
    }
    const VImage webp = decoded(result("image.webp", logo));
    EXPECT_EQ(webp.bands(), 4);
    EXPECT_EQ(pixel(webp, 1, 1)[3], 0);
}

// Conversions follow the quality and longest-side settings; transforms keep at least the
// source's quality.
TEST_F(ImageOperationsTest, QualityAndSizeSettingsForConversionsAndTheFloorForTransforms)
{
    FormatSettings smaller;
    smaller.imageMaxDimension = 500;
    smaller.save();
    const VImage limited = decoded(result("image.jpg", picture(QStringLiteral("Big.png"), photoLike(2000, 1000))));
    EXPECT_EQ(limited.width(), 500);
    EXPECT_EQ(limited.height(), 250);

    if (!haveTool(QStringLiteral("identify")))
        GTEST_SKIP() << "ImageMagick's identify estimates JPEG quality";
    smaller.imageMaxDimension = 0;
    smaller.imageQuality = FormatSettings::ImageQuality::smaller;
    smaller.save();
    const QString png = picture(QStringLiteral("p.png"), photoLike(200, 100));
    const QString jpeg = picture(QStringLiteral("j.jpg"), photoLike(200, 100), QStringLiteral("[Q=70]"));
    const auto estimatedQuality = [](const QString& file) {
        return toolOutput(QStringLiteral("identify"), {QStringLiteral("-format"), QStringLiteral("%Q"), file}).toInt();
    };
    EXPECT_EQ(estimatedQuality(result("image.jpg", png)), 72);
    EXPECT_EQ(estimatedQuality(result("image.rotate", jpeg)), 90);

    FormatSettings higher;
    higher.imageQuality = FormatSettings::ImageQuality::higher;
    higher.save();
    EXPECT_EQ(estimatedQuality(result("image.rotateLeft", jpeg)), 95);
}

TEST_F(ImageOperationsTest, MetadataIsKeptWithoutOrientationOrDroppedAsAsked)
{
    if (!haveTool(QStringLiteral("exiftool")))
        GTEST_SKIP() << "exiftool reads the metadata back";
    VImage tagged = twoColours(60, 30).copy();
    tagged.set("orientation", 6);
    const QString photo = picture(QStringLiteral("tagged.jpg"), tagged, QStringLiteral("[strip=false]"));
    ASSERT_TRUE(runTool(QStringLiteral("exiftool"),
                        {QStringLiteral("-q"), QStringLiteral("-overwrite_original"), QStringLiteral("-Make=TestCam"),
                         QStringLiteral("-GPSLatitude=48.1"), QStringLiteral("-GPSLatitudeRef=N"),
                         QStringLiteral("-XMP-tiff:Orientation=6"), QStringLiteral("-n"), photo}));
    ASSERT_EQ(exifTag(photo, "Orientation"), u"6");

    for (const char* id : {"image.png", "image.webp", "image.rotate"}) {
        const QString output = result(id, photo);
        EXPECT_EQ(exifTag(output, "Make"), u"TestCam") << id;
        EXPECT_EQ(exifTag(output, "GPSLatitude"), u"48.1") << id;
        // The pixels are upright; any orientation left must say so, or it would turn them again.
        const QString orientation = exifTag(output, "Orientation");
        EXPECT_TRUE(orientation.isEmpty() || orientation == u"1") << id << " " << orientation.toStdString();
        EXPECT_FALSE(toolOutput(QStringLiteral("exiftool"), {QStringLiteral("-XMP-tiff:all"), output}).contains(u"Orientation"));
    }
    EXPECT_EQ(decoded(result("image.png", photo)).width(), 30);

    // Tagged to be turned: the pixels are turned and written again, without metadata.
    const QString clean = result("image.strip", photo);
    EXPECT_TRUE(exifTag(clean, "Make").isEmpty());
    EXPECT_TRUE(exifTag(clean, "GPSLatitude").isEmpty());
    EXPECT_EQ(decoded(clean).width(), 30);

    // Already upright: the same pixels exactly, not encoded again.
    const QString upright = picture(QStringLiteral("upright.jpg"), twoColours(60, 30), QStringLiteral("[strip=false]"));
    ASSERT_TRUE(runTool(QStringLiteral("exiftool"), {QStringLiteral("-q"), QStringLiteral("-overwrite_original"),
                                                     QStringLiteral("-GPSLatitude=48.1"), QStringLiteral("-GPSLatitudeRef=N"),
                                                     upright}));
    const QString uprightClean = result("image.strip", upright);
    EXPECT_TRUE(exifTag(uprightClean, "GPSLatitude").isEmpty());
    EXPECT_EQ((decoded(uprightClean) - decoded(upright)).abs().max(), 0.0);

    FormatSettings noMetadata;
    noMetadata.keepMetadata = false;
    noMetadata.save();
    EXPECT_TRUE(exifTag(result("image.webp", photo), "GPSLatitude").isEmpty());
}

TEST_F(ImageOperationsTest, TransformsGiveTheirSizesAndNames)
{
    const QString photo = picture(QStringLiteral("Holiday.jpg"), photoLike(3840, 2161));
    EXPECT_EQ(QFileInfo(result("image.fit1920", photo)).fileName(), u"Holiday Resized.jpg");
    EXPECT_EQ(decoded(path(QStringLiteral("Holiday Resized.jpg"))).height(), 1081);  // 1080.5 rounds up
    const VImage half = decoded(result("image.half", photo));
    EXPECT_EQ(half.width(), 1920);
    EXPECT_EQ(half.height(), 1080);
    const VImage square = decoded(result("image.square", photo));
    EXPECT_EQ(square.width(), 2161);
    EXPECT_EQ(square.height(), 2161);

    const QString shot = picture(QStringLiteral("Shot.png"), photoLike(100, 60));
    const QString card = result("image.background", shot);
    EXPECT_EQ(QFileInfo(card).fileName(), u"Shot Background.png");
    EXPECT_EQ(decoded(card).width(), 196);
    EXPECT_EQ(decoded(card).height(), 156);
    EXPECT_EQ(QFileInfo(result("image.autoEnhance", shot)).fileName(), u"Shot Enhanced.png");

    const QString small = picture(QStringLiteral("Small.png"), photoLike(1000, 500));
    EXPECT_EQ(decoded(result("image.fit1920", small)).width(), 1000);
    EXPECT_EQ(decoded(result("image.gray", small)).bands(), 1);
}

TEST_F(ImageOperationsTest, TransformsKeepTheSourceFormatExceptGif)
{
    const QString gif = picture(QStringLiteral("Anim.gif"), photoLike(40, 30));
    const QString clearGif = picture(QStringLiteral("Clear.gif"), transparentDisc(40));
    EXPECT_EQ(QFileInfo(result("image.rotate", clearGif)).fileName(), u"Clear Rotated.png");
    const QString opaque = result("image.rotate", gif);
    EXPECT_TRUE(opaque.endsWith(u"Anim Rotated.jpg") || opaque.endsWith(u"Anim Rotated.png"));
    if (canWrite(ImageFormat::heic)) {
        const QString heic = picture(QStringLiteral("Trip.heic"), photoLike(64, 48));
        const QString turned = result("image.rotate", heic);
        EXPECT_EQ(QFileInfo(turned).fileName(), u"Trip Rotated.heic");
        EXPECT_EQ(decoded(turned).width(), 48);
    }
    const QString logo = picture(QStringLiteral("Logo.png"), transparentDisc(40));
    EXPECT_EQ(decoded(result("image.flip", logo)).bands(), 4);
    EXPECT_EQ(decoded(result("image.autoEnhance", logo)).bands(), 4);
}

TEST_F(ImageOperationsTest, IconAndPdfFromPictures)
{
    const QString logo = picture(QStringLiteral("Logo.png"), transparentDisc(300).crop(0, 50, 300, 200));
    const QString icon = result("image.ico", logo);
    EXPECT_EQ(QFileInfo(icon).fileName(), u"Logo.ico");
    EXPECT_EQ(readFile(icon).mid(2, 4), QByteArray("\1\0\7\0", 4));  // an icon with all seven sizes

    const QString photo = picture(QStringLiteral("Photo.jpg"), photoLike(4000, 3000));
    const JobReport report = run("image.pdf", {photo, logo});
    ASSERT_TRUE(report.succeeded) << report.message.toStdString();
    EXPECT_EQ(report.results, QStringList{path(QStringLiteral("Photo.pdf"))});
    if (haveTool(QStringLiteral("pdfinfo"))) {
        EXPECT_TRUE(toolOutput(QStringLiteral("pdfinfo"), {report.results.first()}).contains(u"Pages:           2"));
    }
}

TEST_F(ImageOperationsTest, BadInputsFailWithTheLoadersMessageAndLeaveNothing)
{
    save(photoLike(300, 200), path(QStringLiteral("whole.jpg")));
    writeFile(path(QStringLiteral("truncated.jpg")), readFile(path(QStringLiteral("whole.jpg"))).left(2000));
    writeFile(path(QStringLiteral("text.jpg")), "plain text\n");
    writeFile(path(QStringLiteral("empty.png")), {});
    const QStringList before = folderEntries(folder.path());
    for (const char* id : {"image.webp", "image.half", "image.rotate", "image.ico", "image.compress", "image.pdf"}) {
        for (const char* name : {"truncated.jpg", "text.jpg", "empty.png"}) {
            const JobReport report = run(id, {path(QString::fromUtf8(name))});
            EXPECT_FALSE(report.succeeded) << id << " " << name;
            EXPECT_EQ(report.message, u"Can't read this image") << id << " " << name;
        }
    }
    EXPECT_EQ(folderEntries(folder.path()), before);
}

TEST_F(ImageOperationsTest, CompressMeetsTheTargetWithoutMetadata)
{
    CompressionSettings settings;
    settings.targetMB = 0.05;
    settings.save();
    VImage tagged = photoLike(1600, 1200).copy();
    tagged.set("orientation", 1);
    const QString photo = picture(QStringLiteral("Holiday.png"), tagged);
    const QString compressed = result("image.compress", photo);
    EXPECT_EQ(QFileInfo(compressed).fileName(), u"Holiday Compressed.jpg");
    EXPECT_LE(QFileInfo(compressed).size(), 50'000);
    EXPECT_GT(QFileInfo(compressed).size(), 10'000);
    EXPECT_EQ(loaderOf(compressed), u"jpegload");

    settings.mode = CompressionSettings::Mode::quality;
    settings.maxDimension = 800;
    settings.save();
    const VImage limited = decoded(result("image.compress", picture(QStringLiteral("Logo.png"), transparentDisc(1000))));
    EXPECT_EQ(limited.width(), 800);
    EXPECT_GT(pixel(limited, 2, 2)[0], 245);  // transparency became white
}
