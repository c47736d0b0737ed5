#include "imaging/TestPictures.h"
#include "operations/settings/CompressionSettings.h"
#include "operations/settings/SettingsStore.h"
#include "support/TestEnvironment.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QTemporaryDir>

#include <gtest/gtest.h>

using namespace wendrel;
using namespace wendrel::test;

namespace {

struct Result {
    int exitCode = -1;
    QString out;
    QString err;
};

// Gives the started process `input` and waits for its end; one that hangs is killed and
// reported with exit code -1.
Result finish(QProcess& process, const QByteArray& input = {})
{
    process.write(input);
    process.closeWriteChannel();
    if (!process.waitForFinished(60'000)) {
        process.kill();
        return {};
    }
    return {process.exitCode(), QString::fromUtf8(process.readAllStandardOutput()),
            QString::fromUtf8(process.readAllStandardError())};
}

// Runs the real wendrel binary, the way a user or a script would, in the private home.
// Standard input is a pipe, never a terminal.
Result runWendrel(const QStringList& arguments, const QString& workingDirectory = {})
{
    QProcess process;
    process.setWorkingDirectory(workingDirectory.isEmpty() ? QDir::tempPath() : workingDirectory);
    process.start(QStringLiteral(WENDREL_BINARY), arguments);
    return finish(process);
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

QString shellQuoted(const QString& text)
{
    QString quoted = text;
    quoted.replace(u'\'', QStringLiteral("'\\''"));
    return u'\'' + quoted + u'\'';
}

// Runs wendrel on a terminal of its own (through script(1)) and types `typed` into it.
Result runWendrelOnTerminal(const QStringList& arguments, const QByteArray& typed)
{
    QStringList command{shellQuoted(QStringLiteral(WENDREL_BINARY))};
    for (const QString& argument : arguments)
        command.append(shellQuoted(argument));
    QProcess process;
    process.start(QStringLiteral("script"), {QStringLiteral("-qec"), command.join(u' '), QStringLiteral("/dev/null")});
    return finish(process, typed);
}

QString imageHeader(const QString& file, const char* field)
{
    return toolOutput(QStringLiteral("vipsheader"), {QStringLiteral("-f"), QString::fromUtf8(field), file}).trimmed();
}

// Compression from the command line, on a photo of 1600 x 1200 pixels, with a private settings file.
class CompressCommandTest : public CommandLineTest {
protected:
    void SetUp() override
    {
        CommandLineTest::SetUp();
        QFile::remove(SettingsStore::filePath());
        photo = folder.filePath(QStringLiteral("Holiday.png"));
        save(photoLike(1600, 1200), photo);
    }
    void TearDown() override { QFile::remove(SettingsStore::filePath()); }

    Result compress(const QStringList& settings)
    {
        return runWendrel(QStringList{QStringLiteral("run"), QStringLiteral("image.compress")} + settings + QStringList{photo});
    }

    QString jpeg() const { return folder.filePath(QStringLiteral("Holiday Compressed.jpg")); }

    QString photo;
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

TEST_F(CompressCommandTest, SettingsGivenAsOptionsDecideTheResultAndAreNotStored)
{
    const Result small = compress({QStringLiteral("--mode"), QStringLiteral("size"), QStringLiteral("--target-mb"),
                                   QStringLiteral("0.03")});
    ASSERT_EQ(small.exitCode, 0) << small.err.toStdString();
    EXPECT_EQ(small.out, jpeg() + u'\n');
    EXPECT_LE(QFileInfo(jpeg()).size(), 30'000);
    EXPECT_GT(QFileInfo(jpeg()).size(), 10'000);

    // --quality alone picks the quality mode; the longest side takes a number of its own.
    const auto atQuality = [&](const char* quality, const char* expectedName) {
        const Result result = compress({QStringLiteral("--quality"), QString::fromUtf8(quality),
                                        QStringLiteral("--max-dimension"), QStringLiteral("1000"),
                                        QStringLiteral("--format"), QStringLiteral("jpg")});
        const QString file = folder.filePath(QString::fromUtf8(expectedName));
        EXPECT_EQ(result.exitCode, 0) << result.err.toStdString();
        EXPECT_EQ(result.out, file + u'\n');
        EXPECT_EQ(imageHeader(file, "width"), u"1000");
        return QFileInfo(file).size();
    };
    const qint64 fine = atQuality("90", "Holiday Compressed 2.jpg");
    const qint64 coarse = atQuality("20", "Holiday Compressed 3.jpg");
    EXPECT_GT(fine, coarse * 2);
    EXPECT_FALSE(QFileInfo::exists(SettingsStore::filePath())) << "options serve one run and are not stored";
}

TEST_F(CompressCommandTest, HeicFormatOption)
{
    const Result result = compress({QStringLiteral("--format"), QStringLiteral("heic"), QStringLiteral("--reduce"),
                                    QStringLiteral("60")});
    if (result.exitCode == 1 && result.err.contains(u"can't be written"))
        GTEST_SKIP() << "this libvips can't write HEIC";
    ASSERT_EQ(result.exitCode, 0) << result.err.toStdString();
    const QString heic = folder.filePath(QStringLiteral("Holiday Compressed.heic"));
    EXPECT_EQ(result.out, heic + u'\n');
    EXPECT_EQ(imageHeader(heic, "vips-loader"), u"heifload");
    EXPECT_LE(QFileInfo(heic).size(), QFileInfo(photo).size() * 40 / 100);
}

TEST_F(CompressCommandTest, InvalidSettingsExitWithTwoAndRunNothing)
{
    const QStringList before = folderEntries(folder.path());
    const auto refused = [&](const QStringList& settings, const QString& message) {
        const Result result = compress(settings);
        EXPECT_EQ(result.exitCode, 2) << settings.join(u' ').toStdString();
        EXPECT_TRUE(result.err.startsWith(QStringLiteral("wendrel: image.compress: ") + message))
            << result.err.toStdString();
        EXPECT_TRUE(result.out.isEmpty());
    };
    refused({QStringLiteral("--quality"), QStringLiteral("abc")},
            QStringLiteral("Invalid value “abc” for --quality: expected a whole number from 1 to 100.\n"));
    refused({QStringLiteral("--mode"), QStringLiteral("fast")},
            QStringLiteral("Invalid value “fast” for --mode: expected targetSize, reduceBy or quality.\n"));
    refused({QStringLiteral("--target-mb"), QStringLiteral("0")}, QStringLiteral("Invalid value “0” for --target-mb"));
    refused({QStringLiteral("--format"), QStringLiteral("png")}, QStringLiteral("Invalid value “png” for --format"));
    refused({QStringLiteral("--mode"), QStringLiteral("quality"), QStringLiteral("--reduce"), QStringLiteral("40")},
            QStringLiteral("--reduce applies only with --mode reduceBy, not with --mode quality.\n"));
    EXPECT_EQ(folderEntries(folder.path()), before);

    const Result notItsSetting = runWendrel({QStringLiteral("run"), QStringLiteral("subtitle.vtt"), QStringLiteral("--quality"),
                                             QStringLiteral("50"), talk});
    EXPECT_EQ(notItsSetting.exitCode, 2);
    EXPECT_EQ(notItsSetting.err, u"wendrel: subtitle.vtt has no settings: --quality doesn't apply to it.\n");
    EXPECT_EQ(runWendrel({QStringLiteral("ops"), QStringLiteral("--quality"), QStringLiteral("50"), photo}).exitCode, 2);
}

TEST_F(CompressCommandTest, WithoutOptionsOrTerminalTheStoredSettingsCount)
{
    CompressionSettings stored;
    stored.mode = CompressionSettings::Mode::quality;
    stored.maxDimension = 800;
    stored.save();
    const QString storedText = QString::fromUtf8(readFile(SettingsStore::filePath()));

    const Result result = compress({});
    ASSERT_EQ(result.exitCode, 0) << result.err.toStdString();
    EXPECT_EQ(imageHeader(jpeg(), "width"), u"800");
    EXPECT_TRUE(result.err.isEmpty()) << "nothing is asked without a terminal: " << result.err.toStdString();
    EXPECT_EQ(QString::fromUtf8(readFile(SettingsStore::filePath())), storedText);
}

TEST_F(CompressCommandTest, OnATerminalEachShownFieldIsAskedAndTheAnswersAreKept)
{
    if (!haveTool(QStringLiteral("script")))
        GTEST_SKIP() << "script(1) is needed for a terminal";
    // Mode 3 (By quality), quality 60, longest side 5 (1280 px), format kept, confirmed.
    const Result result = runWendrelOnTerminal({QStringLiteral("run"), QStringLiteral("image.compress"), photo},
                                               "3\n60\n5\n\ny\n");
    ASSERT_EQ(result.exitCode, 0) << result.out.toStdString();
    EXPECT_TRUE(result.out.contains(u"Choose 1-3 [1]: ")) << result.out.toStdString();
    EXPECT_TRUE(result.out.contains(u"Quality (1-100) [75]: "));
    EXPECT_FALSE(result.out.contains(u"MB or less")) << "the size isn't asked in the quality mode";
    EXPECT_TRUE(result.out.contains(u"Compress image? [Y/n]: "));
    EXPECT_EQ(imageHeader(jpeg(), "width"), u"1280");

    CompressionSettings expected;
    expected.mode = CompressionSettings::Mode::quality;
    expected.qualityPercent = 60;
    expected.maxDimension = 1280;
    EXPECT_EQ(CompressionSettings::load(), expected);

    // A wrong answer is explained and asked again; declining runs nothing and keeps the settings.
    const Result declined = runWendrelOnTerminal({QStringLiteral("run"), QStringLiteral("image.compress"), photo},
                                                 "\nloud\n10\n\n\nn\n");
    EXPECT_EQ(declined.exitCode, 130);
    EXPECT_TRUE(declined.out.contains(u"Please enter a whole number from 1 to 100.")) << declined.out.toStdString();
    EXPECT_TRUE(declined.out.contains(u"Cancelled; nothing was run."));
    EXPECT_FALSE(QFileInfo::exists(folder.filePath(QStringLiteral("Holiday Compressed 2.jpg"))));
    EXPECT_EQ(CompressionSettings::load(), expected);
}

TEST_F(CompressCommandTest, HelpDescribesEveryEntrysSettings)
{
    const Result general = runWendrel({QStringLiteral("--help")});
    EXPECT_TRUE(general.out.contains(u"  image.compress  --mode --target-mb --reduce --quality --max-dimension --format\n"))
        << general.out.toStdString();

    CompressionSettings stored;
    stored.qualityPercent = 64;
    stored.save();
    for (const QStringList& arguments : {QStringList{QStringLiteral("help"), QStringLiteral("image.compress")},
                                         QStringList{QStringLiteral("run"), QStringLiteral("image.compress"), QStringLiteral("--help")}}) {
        const Result detail = runWendrel(arguments);
        EXPECT_EQ(detail.exitCode, 0);
        EXPECT_TRUE(detail.out.contains(u"  --quality 1-100\n"
                                        "      Quality N%, where N is a whole number from 1 to 100. With --mode quality. Now: 64.\n"))
            << detail.out.toStdString();
        EXPECT_TRUE(detail.out.contains(u"  --mode targetSize|reduceBy|quality\n"));
        EXPECT_TRUE(detail.out.contains(u"  --max-dimension 0|3840|2560|1920|1280|800|N\n"));
    }
    EXPECT_EQ(runWendrel({QStringLiteral("help"), QStringLiteral("image.nothing")}).exitCode, 2);
}

TEST_F(CompressCommandTest, OpsJsonDescribesThePromptForScripts)
{
    const Result result = runWendrel({QStringLiteral("ops"), QStringLiteral("--json"), photo, photo});
    ASSERT_EQ(result.exitCode, 0);
    const QJsonArray tools = QJsonDocument::fromJson(result.out.toUtf8()).object().value(QStringLiteral("tools")).toArray();
    QJsonObject prompt;
    for (const QJsonValue& entry : tools) {
        if (entry.toObject().value(QStringLiteral("id")).toString() == u"image.compress")
            prompt = entry.toObject().value(QStringLiteral("prompt")).toObject();
    }
    EXPECT_EQ(prompt.value(QStringLiteral("confirm")).toString(), u"Compress 2 images");
    QStringList options;
    for (const QJsonValue& field : prompt.value(QStringLiteral("fields")).toArray())
        options.append(field.toObject().value(QStringLiteral("option")).toString());
    EXPECT_EQ(options, (QStringList{QStringLiteral("--mode"), QStringLiteral("--target-mb"), QStringLiteral("--reduce"),
                                    QStringLiteral("--quality"), QStringLiteral("--max-dimension"), QStringLiteral("--format")}));
    for (const QJsonValue& entry : tools) {
        const QString id = entry.toObject().value(QStringLiteral("id")).toString();
        if (id != u"image.compress") {
            EXPECT_FALSE(entry.toObject().contains(QStringLiteral("prompt"))) << id.toStdString();
        }
    }
}
