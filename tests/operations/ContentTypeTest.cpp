#include "operations/ContentType.h"

#include "support/TestEnvironment.h"

#include <QDir>
#include <QTemporaryDir>

#include <gtest/gtest.h>

using namespace wendrel;
using test::writeFile;

// Which types belong to which families: images to image, data and item but not to each other,
// folders to item only, families never down to their members.
TEST(ContentTypeConformance, TypesBelongToTheirFamiliesOnly)
{
    for (const ContentType& type : {ContentType::png(), ContentType::jpeg(), ContentType::heic(), ContentType::webp(),
                                    ContentType::avif(), ContentType::tiff(), ContentType::bmp(), ContentType::gif(),
                                    ContentType::ico(), ContentType::svg(), ContentType::jpegXl()}) {
        for (const ContentType& family : {ContentType::image(), ContentType::data(), ContentType::item()})
            EXPECT_TRUE(type.conformsTo(family)) << type.name().toStdString() << " " << family.name().toStdString();
    }
    const ContentType mp4 = ContentType::fromMimeName(QStringLiteral("video/mp4"));
    const ContentType mp3 = ContentType::fromMimeName(QStringLiteral("audio/mpeg"));
    const struct {
        ContentType type;
        ContentType family;
        bool conforms;
    } rows[] = {
        {ContentType::png(), ContentType::jpeg(), false},
        {ContentType::pdf(), ContentType::image(), false},
        {ContentType::folder(), ContentType::item(), true},
        {ContentType::folder(), ContentType::data(), false},
        {ContentType::folder(), ContentType::image(), false},
        {ContentType::item(), ContentType::data(), false},
        {ContentType::image(), ContentType::png(), false},
        {ContentType::data(), ContentType::plainText(), false},
        {mp4, ContentType::movie(), true},
        {mp4, ContentType::audiovisualContent(), true},
        {mp3, ContentType::audiovisualContent(), true},
        {mp3, ContentType::movie(), false},
        {ContentType::png(), ContentType::audiovisualContent(), false},
        {ContentType::subRip(), ContentType::plainText(), true},
        {ContentType::webVtt(), ContentType::plainText(), true},
        {ContentType::commaSeparatedText(), ContentType::plainText(), true},
        {ContentType::subRip(), ContentType::webVtt(), false},
    };
    for (const auto& row : rows)
        EXPECT_EQ(row.type.conformsTo(row.family), row.conforms)
            << row.type.name().toStdString() << " " << row.family.name().toStdString();
    EXPECT_EQ(ContentType::fromMimeName(QStringLiteral("image/x-icon")), ContentType::ico());
    EXPECT_EQ(ContentType::fromMimeName(QStringLiteral("image/heic")), ContentType::heic());
}

// A conclusive name decides (text renamed to .jpg is taken at its word, so the image loader
// refuses it with its own message instead of the ring hiding every image entry); content
// decides when the name says nothing; a trailing separator or a directory means a folder.
TEST(ContentTypeOfFile, NameThenContentThenFolder)
{
    QTemporaryDir folder;
    const auto path = [&](const char* name) { return folder.filePath(QString::fromUtf8(name)); };
    const QByteArray pngSignature("\x89PNG\r\n\x1a\n\0\0\0\rIHDR", 16);
    writeFile(path("picture.png"), pngSignature);
    writeFile(path("picture"), pngSignature);
    writeFile(path("talk.srt"), "1\n00:00:01,000 --> 00:00:02,000\nHi\n");
    writeFile(path("fake.jpg"), "this is not a picture\n");
    writeFile(path("notes"), "plain file");
    QDir(folder.path()).mkdir(QStringLiteral("Docs"));
    const struct {
        QString path;
        ContentType expected;
    } rows[] = {
        {path("picture.png"), ContentType::png()},      {path("picture"), ContentType::png()},
        {path("talk.srt"), ContentType::subRip()},      {path("fake.jpg"), ContentType::jpeg()},
        {path("gone/Holiday.JPG"), ContentType::jpeg()}, {path("notes") + u'/', ContentType::folder()},
        {path("Docs"), ContentType::folder()},
    };
    for (const auto& row : rows)
        EXPECT_EQ(ContentType::ofFile(row.path), row.expected) << row.path.toStdString();
    EXPECT_NE(ContentType::ofFile(path("notes")), ContentType::folder());

    // An unknown extension is generic data, which only the data and item families take.
    writeFile(path("blob.qqzx"), QByteArray("\x01\x02\x03\x04", 4));
    const ContentType blob = ContentType::ofFile(path("blob.qqzx"));
    EXPECT_TRUE(blob.conformsTo(ContentType::data()));
    EXPECT_TRUE(blob.conformsTo(ContentType::item()));
    EXPECT_FALSE(blob.conformsTo(ContentType::image()));
    EXPECT_FALSE(blob.conformsTo(ContentType::plainText()));
    EXPECT_EQ(ContentType::ofFile(path("missing.qqzx")).name(), u"application/octet-stream");
}

// Sound and pictures as people see them: playlists only name other files, so they are neither
// sound nor movies; containers that the MIME names don't call video are movies, but only
// themselves, not their audio-only offspring.
TEST(ContentTypeConformance, PlaylistsAreNotMediaAndContainersAreMovies)
{
    const struct {
        const char* extension;
        bool audio;
        bool movie;
    } rows[] = {
        {"pls", false, false}, {"asx", false, false}, {"vlc", false, false}, {"m4u", false, false},
        {"qtl", false, false}, {"m3u", false, false}, {"asf", false, true},  {"rm", false, true},
        {"mxf", false, true},  {"ogx", false, true},  {"wma", true, false},  {"ogg", true, false},
        {"mkv", false, true},  {"mka", true, false},  {"mp3", true, false},  {"mov", false, true},
    };
    for (const auto& row : rows) {
        const ContentType type = ContentType::fromExtension(QString::fromUtf8(row.extension));
        EXPECT_EQ(type.conformsTo(ContentType::audio()), row.audio) << row.extension;
        EXPECT_EQ(type.conformsTo(ContentType::movie()), row.movie) << row.extension;
        EXPECT_EQ(type.conformsTo(ContentType::audiovisualContent()), row.audio || row.movie) << row.extension;
    }
}
