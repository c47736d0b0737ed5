#include "MediaTestTools.h"

#include "operations/ContentType.h"
#include "support/TestEnvironment.h"

#include <QTemporaryDir>

#include <gtest/gtest.h>

using namespace wendrel;
using namespace wendrel::test;
using namespace Qt::StringLiterals;

// Real files as the ffmpeg program writes them: movies are movies, sound is sound, both are
// audio or video content, and a file's content decides where its name is ambiguous (.ts is
// also the name of translation sources).
TEST(MediaContentType, RealFilesFallIntoTheirFamilies)
{
    QTemporaryDir folder;
    const QStringList tone = lavfi(u"sine=d=0.2"_s), movie = lavfi(u"testsrc2=size=64x48:rate=10:d=0.2"_s) + tone,
                      webm{u"-c:v"_s, u"libvpx"_s, u"-deadline"_s, u"realtime"_s};
    const struct {
        const char* name;
        QStringList arguments;
        bool movie;
    } rows[] = {
        {"clip.mp4", movie, true},   {"clip.mov", movie, true},         {"clip.mkv", movie, true},
        {"clip.avi", movie, true},   {"clip.webm", movie + webm, true}, {"clip.ts", movie, true},
        {"song.wav", tone, false},   {"song.mp3", tone, false},         {"song.flac", tone, false},
        {"song.m4a", tone, false},   {"song.aiff", tone, false},        {"song.ogg", tone, false},
        {"song.opus", tone, false},  {"song.mka", tone, false},
    };
    for (const auto& row : rows) {
        const QString path = folder.filePath(QString::fromUtf8(row.name));
        ASSERT_TRUE(makeMedia(path, row.arguments)) << row.name;
        const ContentType type = ContentType::ofFile(path);
        EXPECT_EQ(type.conformsTo(ContentType::movie()), row.movie) << row.name << " " << type.name().toStdString();
        EXPECT_EQ(type.conformsTo(ContentType::audio()), !row.movie) << row.name << " " << type.name().toStdString();
        EXPECT_TRUE(type.conformsTo(ContentType::audiovisualContent())) << row.name;
        EXPECT_FALSE(type.conformsTo(ContentType::image())) << row.name;
    }

    // A conclusive name is taken at its word: text called .mp4 is a movie to the ring, and the
    // media entries refuse it with their own message when they open it.
    const QString notAMovie = folder.filePath(u"notes.mp4"_s);
    writeFile(notAMovie, "just some text\n");
    EXPECT_TRUE(ContentType::ofFile(notAMovie).conformsTo(ContentType::movie()));
    // A playlist only names other files.
    const QString playlist = folder.filePath(u"mix.pls"_s);
    writeFile(playlist, "[playlist]\nFile1=song.mp3\nNumberOfEntries=1\nVersion=2\n");
    EXPECT_FALSE(ContentType::ofFile(playlist).conformsTo(ContentType::audiovisualContent()));
}
