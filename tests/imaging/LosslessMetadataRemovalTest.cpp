#include "imaging/LosslessMetadataRemoval.h"

#include "TestPictures.h"
#include "support/TestEnvironment.h"

#include <QTemporaryDir>

#include <gtest/gtest.h>

using namespace wendrel;
using namespace wendrel::test;
using vips::VImage;

namespace {

class LosslessMetadataRemovalTest : public ::testing::Test {
protected:
    void SetUp() override
    {
        if (!haveTool(QStringLiteral("exiftool")))
            GTEST_SKIP() << "exiftool writes and reads the metadata";
    }

    // A photo full of metadata: EXIF with a place, XMP, IPTC, a comment and a colour profile.
    QString taggedJpeg()
    {
        const QString path = folder.filePath(QStringLiteral("tagged.jpg"));
        save(photoLike(120, 80).icc_transform("srgb").copy(), path + QStringLiteral("[Q=90,strip=false]"));
        EXPECT_TRUE(runTool(QStringLiteral("exiftool"),
                            {QStringLiteral("-q"), QStringLiteral("-overwrite_original"), QStringLiteral("-Make=TestCam"),
                             QStringLiteral("-GPSLatitude=48.1"), QStringLiteral("-GPSLatitudeRef=N"),
                             QStringLiteral("-XMP-dc:Creator=Someone"), QStringLiteral("-IPTC:City=Lyon"),
                             QStringLiteral("-Comment=secret"), path}));
        return path;
    }

    QString metadataOf(const QString& path)
    {
        return toolOutput(QStringLiteral("exiftool"),
                          {QStringLiteral("-s"), QStringLiteral("-Make"), QStringLiteral("-GPSLatitude"),
                           QStringLiteral("-Creator"), QStringLiteral("-City"), QStringLiteral("-Comment"), path});
    }

    QTemporaryDir folder;
};

double largestDifference(const QString& first, const QString& second)
{
    return (decoded(first) - decoded(second)).abs().max();
}

}  // namespace

TEST_F(LosslessMetadataRemovalTest, JpegLosesItsMetadataButNotAPixelNorItsProfile)
{
    const QString tagged = taggedJpeg();
    ASSERT_TRUE(metadataOf(tagged).contains(u"TestCam"));
    ASSERT_TRUE(metadataOf(tagged).contains(u"Lyon"));

    const std::optional<QByteArray> clean = jpegWithoutMetadata(readFile(tagged));
    ASSERT_TRUE(clean);
    const QString cleanPath = folder.filePath(QStringLiteral("clean.jpg"));
    writeFile(cleanPath, *clean);
    EXPECT_TRUE(metadataOf(cleanPath).trimmed().isEmpty()) << metadataOf(cleanPath).toStdString();
    EXPECT_EQ(largestDifference(tagged, cleanPath), 0.0);
    EXPECT_TRUE(decoded(cleanPath).get_typeof("icc-profile-data"));
    EXPECT_LT(clean->size(), readFile(tagged).size());
}

// What follows the image is left behind; damaged or foreign files are left to the encoder.
TEST_F(LosslessMetadataRemovalTest, TrailersAreDroppedAndDamagedFilesRefused)
{
    const QByteArray whole = readFile(taggedJpeg());
    const std::optional<QByteArray> clean = jpegWithoutMetadata(whole + QByteArray("\xFF\xD8 a second picture's EXIF", 26));
    ASSERT_TRUE(clean);
    EXPECT_TRUE(clean->endsWith("\xFF\xD9"));
    EXPECT_LT(clean->size(), whole.size());

    QByteArray lyingLength = whole;
    lyingLength[4] = char(0xFF);  // the first segment claims to run past the end
    lyingLength[5] = char(0xFF);
    for (const QByteArray& bad : {whole.left(whole.size() / 2), whole.left(30), QByteArray("not a jpeg at all"),
                                  lyingLength.left(2000)})
        EXPECT_EQ(jpegWithoutMetadata(bad), std::nullopt) << bad.size() << " bytes";
    EXPECT_EQ(pngWithoutMetadata(whole), std::nullopt);
}

TEST_F(LosslessMetadataRemovalTest, PngLosesTextTimeAndExifChunks)
{
    const QString path = folder.filePath(QStringLiteral("tagged.png"));
    save(transparentDisc(64), path);
    ASSERT_TRUE(runTool(QStringLiteral("exiftool"), {QStringLiteral("-q"), QStringLiteral("-overwrite_original"),
                                                     QStringLiteral("-PNG:Comment=secret"), QStringLiteral("-Make=TestCam"),
                                                     path}));
    const std::optional<QByteArray> clean = pngWithoutMetadata(readFile(path));
    ASSERT_TRUE(clean);
    const QString cleanPath = folder.filePath(QStringLiteral("clean.png"));
    writeFile(cleanPath, *clean);
    EXPECT_TRUE(metadataOf(cleanPath).trimmed().isEmpty()) << metadataOf(cleanPath).toStdString();
    EXPECT_EQ(largestDifference(path, cleanPath), 0.0);
    EXPECT_EQ(pngWithoutMetadata(readFile(path).chopped(20)), std::nullopt);
}
