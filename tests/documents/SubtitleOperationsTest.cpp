#include "documents/subtitles/SubtitleOperations.h"

#include "operations/JobRunner.h"
#include "operations/OperationCatalog.h"
#include "support/JobHarness.h"
#include "support/TestEnvironment.h"
#include "support/ToolRun.h"

#include <QFileInfo>
#include <QTemporaryDir>

#include <gtest/gtest.h>

using namespace wendrel;
using namespace wendrel::test;
using namespace Qt::StringLiterals;

namespace {

const QByteArray talkSrt =
    "1\r\n00:00:02,150 --> 00:00:05,660\r\nMorning. Is the ferry still running today?\r\n\r\n"
    "2\r\n00:00:06,197 --> 00:00:10,092\r\nOnly the early one.\r\nThe wind picked up.\r\n\r\n"
    "3\r\n00:01:10,766 --> 00:01:13,176\r\n<i>[engine idling]</i>\r\n";

// Cue start times as FFmpeg's subtitle demuxers read them: an independent reader of both formats.
QStringList cueStartsByFfprobe(const QString& path)
{
    const ToolRun probe = runTool(u"ffprobe"_s, {u"-v"_s, u"error"_s, u"-show_entries"_s, u"packet=pts_time"_s, u"-of"_s,
                                                 u"csv=p=0"_s, path});
    if (probe.exitCode != 0)
        return {QStringLiteral("ffprobe failed: ") + probe.errors};
    return probe.output.split(u'\n', Qt::SkipEmptyParts);
}

class SubtitleOperationsTest : public ::testing::Test {
protected:
    void SetUp() override
    {
        registerSubtitleOperations(catalog);
        source = folder.filePath(QStringLiteral("talk.srt"));
        writeFile(source, talkSrt);
    }

    void TearDown() override { EXPECT_TRUE(leftoverScratchFolders().isEmpty()); }

    JobReport run(const char* id, const QStringList& paths)
    {
        const FileOperationPtr entry = catalog.find(QString::fromUtf8(id));
        EXPECT_TRUE(entry) << id;
        return runJob(runner, entry, paths);
    }

    QTemporaryDir folder;
    QString source;
    OperationCatalog catalog;
    JobRunner runner;
};

}  // namespace

// Results land beside the original, which stays as it was; a second run counts up.
TEST_F(SubtitleOperationsTest, EachTargetWritesBesideTheOriginal)
{
    const struct {
        const char* id;
        const char* name;
        QByteArray contents;
    } rows[] = {
        {"subtitle.vtt", "talk.vtt",
         "WEBVTT\n\n00:00:02.150 --> 00:00:05.660\nMorning. Is the ferry still running today?\n\n"
         "00:00:06.197 --> 00:00:10.092\nOnly the early one.\nThe wind picked up.\n\n"
         "00:01:10.766 --> 00:01:13.176\n<i>[engine idling]</i>\n\n"},
        {"subtitle.vtt", "talk 2.vtt", {}},
        // Text keeps only the spoken lines.
        {"subtitle.txt", "talk.txt",
         "Morning. Is the ferry still running today?\nOnly the early one.\nThe wind picked up.\n<i>[engine idling]</i>\n"},
    };
    for (const auto& row : rows) {
        const JobReport report = run(row.id, {source});
        ASSERT_TRUE(report.succeeded) << row.id << ": " << report.message.toStdString();
        EXPECT_EQ(report.results, QStringList{folder.filePath(QString::fromUtf8(row.name))});
        if (!row.contents.isEmpty()) {
            EXPECT_EQ(readFile(report.results.first()), row.contents) << row.name;
        }
    }
    EXPECT_EQ(readFile(source), talkSrt);
}

TEST_F(SubtitleOperationsTest, OutputsReadBackInAnIndependentReader)
{
    if (!toolExists(u"ffprobe"_s))
        GTEST_SKIP() << "ffprobe is not installed";
    const QStringList expected{QStringLiteral("2.150000"), QStringLiteral("6.197000"), QStringLiteral("70.766000")};
    const JobReport vtt = run("subtitle.vtt", {source});
    ASSERT_TRUE(vtt.succeeded);
    EXPECT_EQ(cueStartsByFfprobe(vtt.results.first()), expected);

    const JobReport srt = run("subtitle.srt", vtt.results);
    ASSERT_TRUE(srt.succeeded);
    EXPECT_EQ(QFileInfo(srt.results.first()).fileName(), u"talk 2.srt");
    EXPECT_EQ(cueStartsByFfprobe(srt.results.first()), expected);
}

TEST_F(SubtitleOperationsTest, BadInputsGiveClearMessagesAndWriteNothing)
{
    struct Case {
        const char* name;
        QByteArray bytes;
        const char* message;
    };
    const Case cases[] = {
        {"latin1.srt", "1\n00:00:01,000 --> 00:00:02,000\nCaf\xe9\n", "“latin1.srt” isn't UTF-8 text"},
        {"empty.srt", "", "No subtitles found"}, {"notes.vtt", "WEBVTT\n\nNOTE nothing here\n", "No subtitles found"},
        {"binary.srt", QByteArray("\x00\x01\x02\xff\xfe", 5), "“binary.srt” isn't UTF-8 text"},
    };
    for (const Case& bad : cases) {
        const QString path = folder.filePath(QString::fromUtf8(bad.name));
        writeFile(path, bad.bytes);
        const JobReport report = run("subtitle.vtt", {path});
        EXPECT_FALSE(report.succeeded) << bad.name;
        EXPECT_EQ(report.message, QString::fromUtf8(bad.message));
        EXPECT_EQ(readFile(path), bad.bytes);
    }
    EXPECT_EQ(folderEntries(folder.path()),
              (QStringList{u"binary.srt"_s, u"empty.srt"_s, u"latin1.srt"_s, u"notes.vtt"_s, u"talk.srt"_s}));
    const JobReport vanished = run("subtitle.vtt", {folder.filePath(u"gone.srt"_s)});
    EXPECT_FALSE(vanished.succeeded);
    EXPECT_TRUE(vanished.message.startsWith(u"Couldn't read “gone.srt”")) << vanished.message.toStdString();
}

TEST_F(SubtitleOperationsTest, EntriesTakeSubRipAndWebVttOnly)
{
    writeFile(folder.filePath(u"notes.txt"_s), "hello");
    writeFile(folder.filePath(u"talk.vtt"_s), "WEBVTT\n");
    EXPECT_EQ(catalog.fitting(RingKind::convert, {source}).size(), 3);
    EXPECT_EQ(catalog.fitting(RingKind::convert, {folder.filePath(u"talk.vtt"_s)}).size(), 3);
    EXPECT_TRUE(catalog.fitting(RingKind::convert, {folder.filePath(u"notes.txt"_s)}).isEmpty());
    EXPECT_TRUE(catalog.fitting(RingKind::convert, {folder.path() + u'/'}).isEmpty());
}
