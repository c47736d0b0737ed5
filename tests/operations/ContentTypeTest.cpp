#include "operations/ContentType.h"

#include "support/TestEnvironment.h"

#include <QDir>
#include <QTemporaryDir>

#include <gtest/gtest.h>

using namespace wendrel;
using test::writeFile;

namespace {

const QByteArray pngSignature("\x89PNG\r\n\x1a\n\0\0\0\rIHDR", 16);

}  // namespace

TEST(ContentTypeConformance, ImagesConformToImageButNotToEachOther)
{
    for (const ContentType& type : {ContentType::png(), ContentType::jpeg(), ContentType::heic(),
                                    ContentType::webp(), ContentType::avif(), ContentType::tiff(),
                                    ContentType::bmp(), ContentType::gif(), ContentType::ico(),
                                    ContentType::svg(), ContentType::jpegXl()}) {
        EXPECT_TRUE(type.conformsTo(ContentType::image())) << type.name().toStdString();
        EXPECT_TRUE(type.conformsTo(ContentType::data())) << type.name().toStdString();
        EXPECT_TRUE(type.conformsTo(ContentType::item())) << type.name().toStdString();
    }
    EXPECT_FALSE(ContentType::png().conformsTo(ContentType::jpeg()));
    EXPECT_FALSE(ContentType::pdf().conformsTo(ContentType::image()));
}

TEST(ContentTypeConformance, FolderIsAnItemButNotData)
{
    EXPECT_TRUE(ContentType::folder().conformsTo(ContentType::item()));
    EXPECT_FALSE(ContentType::folder().conformsTo(ContentType::data()));
    EXPECT_FALSE(ContentType::folder().conformsTo(ContentType::image()));
}

TEST(ContentTypeConformance, AbstractFamiliesDoNotConformDownwards)
{
    EXPECT_FALSE(ContentType::item().conformsTo(ContentType::data()));
    EXPECT_FALSE(ContentType::image().conformsTo(ContentType::png()));
    EXPECT_FALSE(ContentType::data().conformsTo(ContentType::plainText()));
}

TEST(ContentTypeConformance, AudiovisualContentTakesMoviesAndAudio)
{
    const ContentType mp4 = ContentType::fromMimeName(QStringLiteral("video/mp4"));
    const ContentType mp3 = ContentType::fromMimeName(QStringLiteral("audio/mpeg"));
    EXPECT_TRUE(mp4.conformsTo(ContentType::movie()));
    EXPECT_TRUE(mp4.conformsTo(ContentType::audiovisualContent()));
    EXPECT_TRUE(mp3.conformsTo(ContentType::audiovisualContent()));
    EXPECT_FALSE(mp3.conformsTo(ContentType::movie()));
    EXPECT_FALSE(ContentType::png().conformsTo(ContentType::audiovisualContent()));
}

TEST(ContentTypeConformance, SubtitlesAndTablesArePlainText)
{
    EXPECT_TRUE(ContentType::subRip().conformsTo(ContentType::plainText()));
    EXPECT_TRUE(ContentType::webVtt().conformsTo(ContentType::plainText()));
    EXPECT_TRUE(ContentType::commaSeparatedText().conformsTo(ContentType::plainText()));
    EXPECT_FALSE(ContentType::subRip().conformsTo(ContentType::webVtt()));
}

TEST(ContentTypeConformance, AliasesNameTheSameType)
{
    EXPECT_EQ(ContentType::fromMimeName(QStringLiteral("image/x-icon")), ContentType::ico());
    EXPECT_EQ(ContentType::fromMimeName(QStringLiteral("image/heic")), ContentType::heic());
}

class ContentTypeOfFile : public ::testing::Test {
protected:
    QString path(const char* name) const { return folder.filePath(QString::fromUtf8(name)); }
    QTemporaryDir folder;
};

TEST_F(ContentTypeOfFile, ExistingFileByNameAndContent)
{
    writeFile(path("picture.png"), pngSignature);
    writeFile(path("talk.srt"), "1\n00:00:01,000 --> 00:00:02,000\nHi\n");
    EXPECT_EQ(ContentType::ofFile(path("picture.png")), ContentType::png());
    EXPECT_EQ(ContentType::ofFile(path("talk.srt")), ContentType::subRip());
}

TEST_F(ContentTypeOfFile, PathEndingInSeparatorIsAFolderEvenIfAFileHasThatName)
{
    writeFile(path("notes"), "plain file");
    EXPECT_EQ(ContentType::ofFile(path("notes") + u'/'), ContentType::folder());
    EXPECT_NE(ContentType::ofFile(path("notes")), ContentType::folder());
}

TEST_F(ContentTypeOfFile, DirectoryWithoutTrailingSeparatorIsAFolder)
{
    QDir(folder.path()).mkdir(QStringLiteral("Docs"));
    EXPECT_EQ(ContentType::ofFile(path("Docs")), ContentType::folder());
}

TEST_F(ContentTypeOfFile, MissingFileIsTypedByItsLowerCasedExtension)
{
    EXPECT_EQ(ContentType::ofFile(path("gone/Holiday.JPG")), ContentType::jpeg());
}

TEST_F(ContentTypeOfFile, UnknownExtensionIsGenericDataThatOnlyDataAndItemTake)
{
    writeFile(path("blob.qqzx"), QByteArray("\x01\x02\x03\x04", 4));
    const ContentType type = ContentType::ofFile(path("blob.qqzx"));
    EXPECT_TRUE(type.conformsTo(ContentType::data()));
    EXPECT_TRUE(type.conformsTo(ContentType::item()));
    EXPECT_FALSE(type.conformsTo(ContentType::image()));
    EXPECT_FALSE(type.conformsTo(ContentType::plainText()));
    EXPECT_EQ(ContentType::ofFile(path("missing.qqzx")).name(), u"application/octet-stream");
}

TEST_F(ContentTypeOfFile, TextRenamedToJpgIsTakenAtItsWord)
{
    // The name decides when it is conclusive; the image loader then refuses the content with
    // its own message instead of the ring hiding every image entry.
    writeFile(path("fake.jpg"), "this is not a picture\n");
    EXPECT_EQ(ContentType::ofFile(path("fake.jpg")), ContentType::jpeg());
}

TEST_F(ContentTypeOfFile, ContentDecidesWhenTheNameSaysNothing)
{
    writeFile(path("picture"), pngSignature);
    EXPECT_EQ(ContentType::ofFile(path("picture")), ContentType::png());
}
