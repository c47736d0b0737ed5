#include "support/TestEnvironment.h"

#include <QDir>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QTemporaryDir>

#include <gtest/gtest.h>

using namespace wendrel::test;

namespace {

struct Result {
    int exitCode = -1;
    QString out;
    QString err;
};

// Runs the real wendrel binary, the way a user or a script would, in the private home.
Result runWendrel(const QStringList& arguments, const QString& workingDirectory = {})
{
    QProcess process;
    process.setWorkingDirectory(workingDirectory.isEmpty() ? QDir::tempPath() : workingDirectory);
    process.start(QStringLiteral(WENDREL_BINARY), arguments);
    if (!process.waitForFinished(60'000)) {
        process.kill();
        return {};
    }
    return {process.exitCode(), QString::fromUtf8(process.readAllStandardOutput()),
            QString::fromUtf8(process.readAllStandardError())};
}

class CommandLineTest : public ::testing::Test {
protected:
    void SetUp() override
    {
        talk = folder.filePath(QStringLiteral("talk.srt"));
        writeFile(talk, "1\n00:00:01,000 --> 00:00:02,000\nHello\n");
    }

    QTemporaryDir folder;
    QString talk;
};

}  // namespace

TEST_F(CommandLineTest, OpsListsTheSubtitleEntriesRingByRing)
{
    const Result result = runWendrel({QStringLiteral("ops"), talk});
    EXPECT_EQ(result.exitCode, 0) << result.err.toStdString();
    EXPECT_TRUE(result.out.startsWith(u"Convert\n  subtitle.srt  SRT\n  subtitle.vtt  VTT\n  subtitle.txt  TXT\n"))
        << result.out.toStdString();
    EXPECT_TRUE(result.out.contains(u"Tools\n"));
    EXPECT_TRUE(result.out.contains(u"Actions\n"));
}

TEST_F(CommandLineTest, OpsJsonListsIdsPerRing)
{
    const Result result = runWendrel({QStringLiteral("ops"), QStringLiteral("--json"), talk});
    ASSERT_EQ(result.exitCode, 0);
    const QJsonObject report = QJsonDocument::fromJson(result.out.toUtf8()).object();
    const QJsonArray convert = report.value(QStringLiteral("convert")).toArray();
    ASSERT_EQ(convert.size(), 4);  // the three subtitle targets, then ZIP, which takes anything
    EXPECT_EQ(convert[1].toObject().value(QStringLiteral("id")).toString(), u"subtitle.vtt");
    EXPECT_EQ(convert[3].toObject().value(QStringLiteral("id")).toString(), u"archive.zip");
    EXPECT_TRUE(report.value(QStringLiteral("tools")).toArray().isEmpty());
}

TEST_F(CommandLineTest, RunWritesBesideTheOriginalThenCountsUp)
{
    const Result first = runWendrel({QStringLiteral("run"), QStringLiteral("subtitle.vtt"), talk});
    const Result second = runWendrel({QStringLiteral("run"), QStringLiteral("subtitle.vtt"), talk});
    EXPECT_EQ(first.exitCode, 0) << first.err.toStdString();
    EXPECT_EQ(first.out, folder.filePath(QStringLiteral("talk.vtt")) + u'\n');
    EXPECT_EQ(second.out, folder.filePath(QStringLiteral("talk 2.vtt")) + u'\n');
    EXPECT_EQ(readFile(folder.filePath(QStringLiteral("talk.vtt"))),
              "WEBVTT\n\n00:00:01.000 --> 00:00:02.000\nHello\n\n");
}

TEST_F(CommandLineTest, RelativePathsAndToFolder)
{
    const Result result = runWendrel({QStringLiteral("run"), QStringLiteral("--to"), QStringLiteral("out/subs"),
                                   QStringLiteral("subtitle.txt"), QStringLiteral("talk.srt")},
                                  folder.path());
    EXPECT_EQ(result.exitCode, 0) << result.err.toStdString();
    EXPECT_EQ(result.out, folder.filePath(QStringLiteral("out/subs/talk.txt")) + u'\n');
    EXPECT_EQ(readFile(folder.filePath(QStringLiteral("out/subs/talk.txt"))), "Hello\n");
}

TEST_F(CommandLineTest, RunJsonReportsResultsAndFailuresPerFile)
{
    const QString bad = folder.filePath(QStringLiteral("bad.srt"));
    writeFile(bad, "no cues at all");
    const Result result = runWendrel({QStringLiteral("run"), QStringLiteral("--json"), QStringLiteral("subtitle.vtt"), talk, bad});
    EXPECT_EQ(result.exitCode, 1);
    const QJsonObject report = QJsonDocument::fromJson(result.out.toUtf8()).object();
    EXPECT_EQ(report.value(QStringLiteral("status")).toString(), u"finished");
    EXPECT_EQ(report.value(QStringLiteral("results")).toArray().first().toString(),
              folder.filePath(QStringLiteral("talk.vtt")));
    const QJsonObject failure = report.value(QStringLiteral("failures")).toArray().first().toObject();
    EXPECT_EQ(failure.value(QStringLiteral("file")).toString(), bad);
    EXPECT_EQ(failure.value(QStringLiteral("message")).toString(), u"No subtitles found");
}

TEST_F(CommandLineTest, FailuresGoToStderrWithNonZeroExit)
{
    const QString latin1 = folder.filePath(QStringLiteral("latin1.srt"));
    writeFile(latin1, "1\n00:00:01,000 --> 00:00:02,000\nCaf\xe9\n");
    const Result result = runWendrel({QStringLiteral("run"), QStringLiteral("subtitle.vtt"), latin1});
    EXPECT_EQ(result.exitCode, 1);
    EXPECT_TRUE(result.out.isEmpty());
    EXPECT_EQ(result.err, QStringLiteral("wendrel: %1: “latin1.srt” isn't UTF-8 text\n").arg(latin1));
    EXPECT_EQ(folderEntries(folder.path()), (QStringList{QStringLiteral("latin1.srt"), QStringLiteral("talk.srt")}));
}

TEST_F(CommandLineTest, EntryThatDoesNotTakeTheFileIsRefusedBeforeRunning)
{
    const QString notes = folder.filePath(QStringLiteral("notes.txt"));
    writeFile(notes, "hello");
    const Result result = runWendrel({QStringLiteral("run"), QStringLiteral("subtitle.srt"), talk, notes});
    EXPECT_EQ(result.exitCode, 1);
    EXPECT_EQ(result.err, QStringLiteral("wendrel: %1: SRT doesn't work with this file\n").arg(notes));
    EXPECT_FALSE(QFileInfo::exists(folder.filePath(QStringLiteral("talk 2.srt"))));
}

TEST_F(CommandLineTest, UsageErrorsExitWithTwo)
{
    EXPECT_EQ(runWendrel({QStringLiteral("run"), QStringLiteral("no.such.entry"), talk}).exitCode, 2);
    EXPECT_EQ(runWendrel({QStringLiteral("run"), QStringLiteral("subtitle.vtt"), folder.filePath(QStringLiteral("missing.srt"))}).exitCode, 2);
    EXPECT_EQ(runWendrel({QStringLiteral("frobnicate")}).exitCode, 2);
    EXPECT_EQ(runWendrel({QStringLiteral("run"), QStringLiteral("--bogus"), QStringLiteral("subtitle.vtt"), talk}).exitCode, 2);
    EXPECT_EQ(runWendrel({QStringLiteral("ops")}).exitCode, 2);
}

TEST_F(CommandLineTest, HelpAndVersion)
{
    const Result help = runWendrel({QStringLiteral("--help")});
    EXPECT_EQ(help.exitCode, 0);
    EXPECT_TRUE(help.out.contains(u"run ENTRY FILE..."));
    const Result version = runWendrel({QStringLiteral("--version")});
    EXPECT_EQ(version.exitCode, 0);
    EXPECT_TRUE(version.out.startsWith(u"wendrel "));
}
