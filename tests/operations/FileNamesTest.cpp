#include "operations/FileNames.h"

#include <QDir>
#include <QFile>
#include <QSet>
#include <QTemporaryDir>

#include <gtest/gtest.h>

using namespace wendrel;
using namespace Qt::Literals::StringLiterals;

namespace {

std::optional<QString> none = std::nullopt;

qsizetype bytes(const QString& name) { return name.toUtf8().size(); }

QString repeated(const char* piece, int times) { return QString::fromUtf8(piece).repeated(times); }

struct NameRow {
    QString source;
    std::optional<QString> suffix;
    std::optional<QString> extension;
    QString expected;
};

}  // namespace

TEST(OutputName, BuildsBaseSuffixAndExtension)
{
    const QList<NameRow> rows{
        {u"/photos/Holiday.JPG"_s, none, u"png"_s, u"Holiday.png"_s},
        {u"/photos/Holiday.JPG"_s, u"Normalized"_s, none, u"Holiday Normalized.JPG"_s},
        {u"/photos/Holiday.JPG"_s, u"Resized"_s, u"jpg"_s, u"Holiday Resized.jpg"_s},
        {u"/a/talk.srt"_s, u""_s, u"vtt"_s, u"talk.vtt"_s},  // an empty suffix adds no space
        {u"/a/README"_s, u"Clean"_s, none, u"README Clean"_s},
        {u"/a/README"_s, none, u""_s, u"README"_s},
        {u"/a/backup.tar.gz"_s, none, u"zip"_s, u"backup.tar.zip"_s},  // only the last extension goes
        {u"/home/me/Docs/"_s, none, u"zip"_s, u"Docs.zip"_s},
        {u"/home/me/.profile"_s, none, u"txt"_s, u".profile.txt"_s},
        {u"/a/Прогулка в парке.srt"_s, none, u"vtt"_s, u"Прогулка в парке.vtt"_s},
        // Names that can't be created become "Untitled": the unzip folder of "...zip" would be
        // "..", the job's own scratch folder.
        {u"/a/...zip"_s, none, u""_s, u"Untitled"_s},
        {u"/a/..zip"_s, none, u""_s, u"Untitled"_s},
        {u"/a/..zip"_s, u"Pages"_s, u""_s, u". Pages"_s},
        {u"/a/..png"_s, none, u"webp"_s, u"..webp"_s},
    };
    for (const NameRow& row : rows) {
        EXPECT_EQ(outputName(row.source, row.suffix, row.extension), row.expected)
            << qPrintable(row.source);
    }
}

// A name near the 255-byte limit keeps its suffix and extension; the base gives way, never by
// half a character, and still leaves room for a collision counter.
TEST(OutputName, LongNamesShortenTheBaseAtACharacterBoundary)
{
    const QList<QString> bases{
        repeated("a", 248),            // the photo that failed "Resized"
        repeated("é", 200),            // two bytes a character
        repeated("文", 90),            // three
        repeated("😀", 70),            // four, two UTF-16 units
        repeated("a", 239) + repeated("😀", 3),
        repeated("ab ", 90),           // a cut at a space leaves no gap before the ellipsis
    };
    for (const QString& base : bases) {
        for (const auto& [suffix, extension] : {std::pair<QString, QString>{u"Resized"_s, u"png"_s},
                                                 {u"Pages"_s, u""_s}, {u""_s, u"zip"_s}}) {
            const QString name = outputName(u"/p/"_s + base + u".png"_s, suffix, extension);
            SCOPED_TRACE(qPrintable(name));
            QString tail = suffix.isEmpty() ? QString() : u" "_s + suffix;
            if (!extension.isEmpty())
                tail += u"."_s + extension;
            EXPECT_LE(bytes(name), longestFileName - 6);
            ASSERT_TRUE(name.endsWith(tail));
            const QString kept = name.chopped(tail.size());
            if (bytes(base + tail) > longestFileName - 6) {
                ASSERT_TRUE(kept.endsWith(u"…"));
                EXPECT_TRUE(base.startsWith(kept.chopped(1)));
                EXPECT_FALSE(kept.chopped(1).endsWith(u' '));
                EXPECT_FALSE(kept.chopped(1).back().isHighSurrogate());
            } else {
                EXPECT_EQ(kept, base);
            }
            EXPECT_TRUE(QString::fromUtf8(name.toUtf8()) == name);  // valid UTF-8 throughout
        }
    }
}

TEST(FitName, OnlyATailThatAloneOverflowsIsCut)
{
    const QString tail = u"."_s + repeated("x", 300);
    const QString name = fitName(u"photo"_s, tail);
    EXPECT_EQ(bytes(name), longestFileName);
    EXPECT_TRUE(name.startsWith(u"photo.xxx"));
}

TEST(UniqueName, CounterGoesBeforeTheLastExtensionAndClimbsPastTakenNames)
{
    struct Row {
        QString wanted;
        QSet<QString> taken;
        QString expected;
    };
    const QList<Row> rows{
        {u"talk.vtt"_s, {}, u"talk.vtt"_s},
        {u"talk.vtt"_s, {u"talk.vtt"_s}, u"talk 2.vtt"_s},
        {u"Holiday Resized.jpg"_s, {u"Holiday Resized.jpg"_s, u"Holiday Resized 2.jpg"_s, u"Holiday Resized 3.jpg"_s},
         u"Holiday Resized 4.jpg"_s},
        {u"Archive"_s, {u"Archive"_s}, u"Archive 2"_s},
        {u"backup.tar.gz"_s, {u"backup.tar.gz"_s}, u"backup.tar 2.gz"_s},
    };
    for (const Row& row : rows) {
        EXPECT_EQ(uniqueName(row.wanted, [&](const QString& name) { return row.taken.contains(name); }),
                  row.expected);
    }
}

// Real files: a result of the longest allowed name and its collision both exist on disk, with
// the suffix and extension intact.
TEST(UniqueName, LongNamesAndTheirCountersCanBeCreated)
{
    QTemporaryDir folder;
    ASSERT_TRUE(folder.isValid());
    const auto isTaken = [&](const QString& name) { return QFile::exists(folder.filePath(name)); };
    const QString wanted = outputName(u"/p/"_s + repeated("é", 124) + u".png"_s, u"Resized"_s, u"png"_s);
    for (int run = 0; run < 3; ++run) {
        const QString name = uniqueName(wanted, isTaken);
        QFile file(folder.filePath(name));
        ASSERT_TRUE(file.open(QIODevice::NewOnly)) << qPrintable(file.errorString());
        EXPECT_TRUE(name.endsWith(run == 0 ? u" Resized.png"_s : u" Resized %1.png"_s.arg(run + 1)));
    }
    EXPECT_EQ(QDir(folder.path()).entryList(QDir::Files).size(), 3);

    // Past the room kept for counters, the base gives way again in front of its ellipsis, so
    // the suffix still survives.
    const QString counted = fitName(splitExtension(wanted).base, u" 100000.png"_s);
    EXPECT_LE(bytes(counted), longestFileName);
    EXPECT_TRUE(counted.endsWith(u"… Resized 100000.png")) << qPrintable(counted);
}

TEST(LastPathComponent, IgnoresOneTrailingSeparator)
{
    EXPECT_EQ(lastPathComponent(u"/a/b/Docs/"_s), u"Docs");
    EXPECT_EQ(lastPathComponent(u"/a/b/file.txt"_s), u"file.txt");
    EXPECT_EQ(lastPathComponent(u"file.txt"_s), u"file.txt");
}
