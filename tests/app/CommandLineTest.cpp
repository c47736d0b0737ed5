#include "app/cli/LayerModules.h"
#include "documents/DocumentOperations.h"
#include "imaging/TestPictures.h"
#include "pdf/TestPdfs.h"
#include "operations/OperationCatalog.h"
#include "operations/RingOrder.h"
#include "operations/settings/CompressionSettings.h"
#include "operations/settings/SettingsStore.h"
#include "support/ExternalTool.h"
#include "support/TestEnvironment.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QRegularExpression>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <sys/resource.h>

using namespace wendrel;
using namespace Qt::StringLiterals;
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

// One command line and what it must give. In the arguments, TALK, NOTES, LATIN1 and MISSING stand
// for a subtitle file, a text file no subtitle entry takes, a subtitle file that isn't UTF-8 and a
// file that doesn't exist.
struct Invocation {
    QStringList arguments;
    int exitCode;
    QStringList outFragments{};  // each must be in standard output
    QStringList errFragments{};  // each must be in standard error
    // With --json: the report's status; standard error stays empty, the JSON is the answer.
    QString jsonStatus{};
};

TEST_F(CommandLineTest, InvocationsExitWithTheirStatusAndSayWhy)
{
    const QString notes = folder.filePath(QStringLiteral("notes.txt"));
    writeFile(notes, "hello");
    const QString latin1 = folder.filePath(QStringLiteral("latin1.srt"));
    writeFile(latin1, "1\n00:00:01,000 --> 00:00:02,000\nCaf\xe9\n");
    const QString missing = folder.filePath(QStringLiteral("missing.srt"));
    const QString wrongEntry = QStringLiteral("SRT doesn't work with this file");
    const QString emptyTo = QStringLiteral("--to needs a folder");

    const QList<Invocation> invocations{
        {{u"--help"_s}, 0, {u"ring KIND FILE..."_s, u"convert, tools or actions"_s, u"ops --all"_s, u"run ENTRY FILE..."_s}},
        {{u"--version"_s}, 0, {u"wendrel 0."_s}},
        {{u"ops"_s, u"TALK"_s},
         0,
         {u"Convert\n  subtitle.srt  SRT\n  subtitle.vtt  VTT\n  subtitle.txt  TXT\n"_s, u"\nTools\n"_s, u"\nActions\n"_s}},
        // A file that fails: why on standard error, nothing on standard output, nothing placed.
        {{u"run"_s, u"subtitle.vtt"_s, u"LATIN1"_s}, 1, {}, {u"latin1.srt: “latin1.srt” isn't UTF-8 text\n"_s}},
        {{u"run"_s, u"--version"_s}, 0, {u"wendrel 0."_s}},
        {{u"frobnicate"_s}, 2, {}, {u"Unknown command 'frobnicate'"_s}},
        {{u"ops"_s}, 2, {}, {u"ops needs at least one file, or --all."_s}},
        {{u"ops"_s, u"--all"_s, u"TALK"_s}, 2, {}, {u"it takes no files"_s}},
        {{u"run"_s, u"--all"_s, u"subtitle.vtt"_s, u"TALK"_s}, 2, {}, {u"--all goes with 'wendrel ops'."_s}},
        {{u"run"_s, u"no.such.entry"_s, u"TALK"_s}, 2, {}, {u"There is no entry 'no.such.entry'"_s}},
        {{u"run"_s, u"subtitle.vtt"_s, u"MISSING"_s}, 2, {}, {u"missing.srt: No such file or directory"_s}},
        {{u"run"_s, u"--bogus"_s, u"subtitle.vtt"_s, u"TALK"_s}, 2, {}, {u"Unknown option 'bogus'"_s}},
        {{u"run"_s, u"subtitle.srt"_s, u"TALK"_s, u"NOTES"_s}, 1, {}, {u"notes.txt: "_s + wrongEntry}},
        {{u"run"_s, u"--to"_s, u""_s, u"subtitle.vtt"_s, u"TALK"_s}, 2, {}, {u"wendrel: "_s + emptyTo}},
        // Scripts get one JSON report whatever happens, with the same exit status.
        {{u"run"_s, u"--json"_s, u"no.such.entry"_s, u"TALK"_s}, 2, {u"There is no entry"_s}, {}, u"unknown"_s},
        {{u"run"_s, u"--json"_s, u"subtitle.srt"_s, u"TALK"_s, u"NOTES"_s}, 1, {wrongEntry, notes}, {}, u"refused"_s},
        {{u"run"_s, u"--json"_s, u"subtitle.vtt"_s, u"MISSING"_s}, 2, {u"No such file"_s}, {}, u"invalid"_s},
        {{u"run"_s, u"--json"_s, u"--bogus"_s, u"subtitle.vtt"_s, u"TALK"_s}, 2, {u"bogus"_s}, {}, u"invalid"_s},
        {{u"run"_s, u"--json"_s, u"subtitle.vtt"_s}, 2, {u"run needs an entry"_s}, {}, u"invalid"_s},
        {{u"run"_s, u"--json"_s, u"--to"_s, u""_s, u"subtitle.vtt"_s, u"TALK"_s}, 2, {emptyTo}, {}, u"invalid"_s},
        {{u"run"_s, u"--json"_s, u"subtitle.vtt"_s, u"--quality"_s, u"50"_s, u"TALK"_s}, 2, {u"has no settings"_s}, {},
         u"invalid"_s},
    };
    for (const Invocation& invocation : invocations) {
        QStringList arguments;
        for (const QString& argument : invocation.arguments)
            arguments.append(argument == u"TALK"      ? talk
                             : argument == u"NOTES"   ? notes
                             : argument == u"LATIN1"  ? latin1
                             : argument == u"MISSING" ? missing
                                                      : argument);
        const std::string shown = invocation.arguments.join(u' ').toStdString();
        const Result result = runWendrel(arguments);
        EXPECT_EQ(result.exitCode, invocation.exitCode) << shown << "\n" << result.err.toStdString();
        for (const QString& fragment : invocation.outFragments)
            EXPECT_TRUE(result.out.contains(fragment)) << shown << ": " << result.out.toStdString();
        for (const QString& fragment : invocation.errFragments)
            EXPECT_TRUE(result.err.contains(fragment)) << shown << ": " << result.err.toStdString();
        // Whatever Qt would say itself (QDir's, QCommandLineParser's own wording) has no place here.
        EXPECT_FALSE(result.err.contains(u"QDir")) << shown << ": " << result.err.toStdString();
        if (invocation.jsonStatus.isEmpty()) {
            if (invocation.exitCode != 0) {
                EXPECT_TRUE(result.out.isEmpty()) << shown << ": " << result.out.toStdString();
            }
            continue;
        }
        QJsonParseError error;
        const QJsonObject report = QJsonDocument::fromJson(result.out.toUtf8(), &error).object();
        EXPECT_EQ(error.error, QJsonParseError::NoError) << shown << ": " << result.out.toStdString();
        EXPECT_EQ(report.value(u"status"_s).toString(), invocation.jsonStatus) << shown;
        EXPECT_TRUE(report.value(u"results"_s).toArray().isEmpty()) << shown;
        EXPECT_TRUE(report.value(u"notes"_s).isArray()) << shown;
        EXPECT_TRUE(result.err.isEmpty()) << shown << ": " << result.err.toStdString();
    }
    // Nothing ran: no result beside the originals.
    EXPECT_EQ(folderEntries(folder.path()), (QStringList{u"latin1.srt"_s, u"notes.txt"_s, u"talk.srt"_s}));
}

TEST_F(CommandLineTest, OpsAllListsEveryEntryOfEachRingInRingOrder)
{
    const Result result = runWendrel({u"ops"_s, u"--all"_s});
    ASSERT_EQ(result.exitCode, 0) << result.err.toStdString();
    // Ring names at the margin, then "  id  title" with the ids in one column.
    EXPECT_TRUE(QRegularExpression(u"^Convert\n  image\\.jpg +JPG\n  image\\.png +PNG\n"_s).match(result.out).hasMatch())
        << result.out.toStdString();
    EXPECT_TRUE(QRegularExpression(u"\nTools\n  image\\.compress +Compress\n"_s).match(result.out).hasMatch());
    EXPECT_TRUE(QRegularExpression(u"\n  subtitle\\.vtt +VTT\n"_s).match(result.out).hasMatch());
    EXPECT_TRUE(result.out.contains(u"\nActions\n"));

    // The JSON form holds the same ids, each ring's in the order of the rings.
    const QJsonObject report = QJsonDocument::fromJson(runWendrel({u"ops"_s, u"--all"_s, u"--json"_s}).out.toUtf8()).object();
    qsizetype listed = 0;
    for (const QString& ring : {u"convert"_s, u"tools"_s, u"actions"_s}) {
        const QJsonArray entries = report.value(ring).toArray();
        int previousRank = -1;
        for (const QJsonValue& entry : entries) {
            const QString id = entry.toObject().value(u"id"_s).toString();
            EXPECT_TRUE(result.out.contains(u"  "_s + id + u"  "_s)) << id.toStdString();
            const int rank = ringRankOf(id.toStdString());
            EXPECT_GT(rank, previousRank) << id.toStdString() << " comes after an entry it precedes on the ring";
            previousRank = rank;
        }
        listed += entries.size();
    }
    EXPECT_GE(listed, 20);
}

// Whether a command started libvips (which loads its modules), whether it loaded libvips at
// all and which of the layer modules it loaded, from the dynamic loader's own account.
struct LibvipsUse {
    int exitCode = -1;
    bool loaded = false;
    bool started = false;
    bool loadedMedia = false;
};

LibvipsUse libvipsUse(const QStringList& arguments)
{
    QProcess process;
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(u"LD_DEBUG"_s, u"files"_s);
    process.setProcessEnvironment(environment);
    process.start(QStringLiteral(WENDREL_BINARY), arguments);
    const Result result = finish(process);
    return {result.exitCode, result.err.contains(u"libvips.so"), result.err.contains(u"/vips-modules-"),
            result.err.contains(u"/wendrel-media.so")};
}

TEST_F(CommandLineTest, OnlyCommandsThatWorkOnPicturesStartLibvips)
{
    const QString photo = folder.filePath(u"photo.png"_s);
    save(photoLike(64, 48), photo);
    const QString report = writeTestPdf(folder.filePath(u"Report.pdf"_s), pagesOfText(3));
    const QString clip = folder.filePath(u"clip.mp4"_s);
    ASSERT_TRUE(runExternalTool(u"ffmpeg"_s, {u"-v"_s, u"error"_s, u"-f"_s, u"lavfi"_s, u"-i"_s,
                                              u"testsrc2=size=64x48:rate=5:duration=1"_s, u"-f"_s, u"lavfi"_s, u"-i"_s,
                                              u"sine=duration=1"_s, u"-c:v"_s, u"libx264"_s, clip})
                    .succeeded());
    QDir(QDir::homePath() + u"/.cache/wendrel"_s).removeRecursively();

    struct Case {
        QStringList arguments;
        int exitCode;
        bool loadsLibvips;
        bool startsLibvips;
        bool loadsMedia = true;
    };
    const QList<Case> cases{
        {{u"--version"_s}, 0, false, false, false},
        {{u"ring"_s}, 2, false, false, false},  // a usage error, answered without the command line's module
        {{u"--help"_s}, 0, true, false},
        {{u"ops"_s, u"--all"_s}, 0, true, false},
        {{u"ops"_s, talk}, 0, true, false, false},
        // Entries of the documents layer run without loading the imaging or media modules at all.
        {{u"run"_s, u"subtitle.vtt"_s, talk}, 0, false, false, false},
        // Which formats can be written is probed once, then known from the cache.
        {{u"ops"_s, photo}, 0, true, true, false},
        {{u"ops"_s, photo}, 0, true, false, false},
        {{u"run"_s, u"image.jpg"_s, photo}, 0, true, true, false},
        // PDF page tools work on the document's structure, never its pixels; a password given
        // as an option is taken as it is, without a second typing.
        {{u"run"_s, u"pdf.split"_s, report}, 0, true, false, false},
        {{u"run"_s, u"pdf.password"_s, u"--password"_s, u"pw 1"_s, report}, 0, true, false, false},
        // Sound and movies are listed and run with the media module alone.
        {{u"ops"_s, clip}, 0, false, false, true},
        {{u"run"_s, u"video.extractAudio"_s, clip}, 0, false, false, true},
        // A run named like an audio entry that the media module doesn't serve looks everywhere
        // before it says there is no such entry.
        {{u"run"_s, u"audio.unheard-of"_s, talk}, 2, true, false},
    };
    for (const Case& command : cases) {
        const std::string shown = command.arguments.join(u' ').toStdString();
        const LibvipsUse use = libvipsUse(command.arguments);
        EXPECT_EQ(use.exitCode, command.exitCode) << shown;
#ifndef WENDREL_MODULES_LINKED  // the sanitised build links everything into the executable
        EXPECT_EQ(use.loaded, command.loadsLibvips) << shown;
        EXPECT_EQ(use.loadedMedia, command.loadsMedia) << shown;
#endif
        EXPECT_EQ(use.started, command.startsLibvips) << shown;
    }
    const QString pages = folder.filePath(u"Report Pages"_s);
    EXPECT_EQ(folderEntries(pages), (QStringList{u"Page 001.pdf"_s, u"Page 002.pdf"_s, u"Page 003.pdf"_s}));
    EXPECT_EQ(pdfToText(pages + u"/Page 002.pdf"_s).trimmed(), u"Page 2"_s);
    EXPECT_TRUE(qpdfCheckPasses(folder.filePath(u"Report Protected.pdf"_s), u"pw 1"_s));
    EXPECT_FALSE(qpdfCheckPasses(folder.filePath(u"Report Protected.pdf"_s)));
    EXPECT_TRUE(QFileInfo::exists(folder.filePath(u"clip.m4a"_s)));
}

// Which layer modules a command loads first, beyond the documents layer linked in: none for a
// run that layer serves, the media module for an audio or video entry or file, imaging for
// other runs and files, all for listings of everything and help.
TEST(LayerModules, EachCommandLoadsOnlyTheModulesItNeeds)
{
    OperationCatalog documents;
    registerDocumentOperations(documents);
    using enum LayerModule;
    const struct {
        QStringList arguments;
        QString entry;
        QList<LayerModule> modules;
    } rows[] = {
        {{u"run"_s, u"subtitle.vtt"_s, u"a.srt"_s}, u"subtitle.vtt"_s, {}},
        {{u"run"_s, u"--to"_s, u"out"_s, u"subtitle.vtt"_s, u"a.srt"_s}, u"subtitle.vtt"_s, {}},
        {{u"run"_s, u"media.m4a"_s, u"a.mp3"_s}, u"media.m4a"_s, {media}},
        {{u"run"_s, u"-v"_s, u"--json"_s, u"audio.normalize"_s, u"a.wav"_s}, u"audio.normalize"_s, {media}},
        // Settings only the media entries know take values, as every setting does.
        {{u"run"_s, u"--max-height"_s, u"720"_s, u"video.compress"_s, u"a.mov"_s}, u"video.compress"_s, {media}},
        {{u"run"_s, u"--codec=hevc"_s, u"video.mute"_s, u"a.mov"_s}, u"video.mute"_s, {media}},
        {{u"run"_s, u"--"_s, u"video.gif"_s, u"a.mov"_s}, u"video.gif"_s, {media}},
        // A file named like an entry is not the entry.
        {{u"run"_s, u"image.jpg"_s, u"audio.png"_s}, u"image.jpg"_s, {imaging}},
        {{u"run"_s, u"subtitle.vtt"_s, u"--unknown"_s, u"1"_s, u"a.srt"_s}, u"subtitle.vtt"_s, {imaging}},
        // Entries for files come from the layers of their types.
        {{u"ops"_s, u"a.mp3"_s, u"b.mkv"_s}, {}, {media}},
        {{u"ops"_s, u"--json"_s, u"a.png"_s, u"b.pdf"_s}, {}, {imaging}},
        {{u"ops"_s, u"a.png"_s, u"b.mov"_s}, {}, {imaging, media}},
        {{u"ops"_s, u"notes.txt"_s}, {}, {imaging}},
        {{u"ops"_s, u"--all"_s}, {}, {imaging, media}},
        {{u"help"_s, u"media.mp4"_s}, {}, {imaging, media}},
        {{}, {}, {imaging, media}},
    };
    for (const auto& row : rows) {
        const QStringList arguments = QStringList{u"wendrel"_s} + row.arguments;
        const std::string shown = row.arguments.join(u' ').toStdString();
        EXPECT_EQ(entryIdOfRun(arguments), row.entry) << shown;
        EXPECT_EQ(modulesToLoadFirst(arguments, documents), row.modules) << shown;
    }
}

TEST_F(CommandLineTest, AnAgentStartedByRingKeepsOutOfTheCallersTerminal)
{
    // No agent runs and nobody serves the display: the agent started for the request fails,
    // and says why in its log, not on the caller's streams, which it must not hold open either.
    const QString runtime = folder.filePath(u"run"_s);
    ASSERT_TRUE(QDir().mkpath(runtime));
    QFile::setPermissions(runtime, QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
    QProcess process;
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(u"XDG_RUNTIME_DIR"_s, runtime);
    environment.insert(u"XDG_STATE_HOME"_s, folder.filePath(u"state"_s));
    environment.insert(u"DISPLAY"_s, u":64999"_s);
    environment.insert(u"QT_QPA_PLATFORM"_s, u"xcb"_s);
    environment.remove(u"WAYLAND_DISPLAY"_s);
    process.setProcessEnvironment(environment);
    // The failing agent aborts; no core file for it.
    process.setChildProcessModifier([] {
        const rlimit noCore{0, 0};
        ::setrlimit(RLIMIT_CORE, &noCore);
    });
    process.start(QStringLiteral(WENDREL_BINARY), {u"ring"_s, u"convert"_s, talk});
    const Result result = finish(process);

    const QString log = folder.filePath(u"state/wendrel/agent.log"_s);
    EXPECT_EQ(result.exitCode, 1);
    EXPECT_TRUE(result.out.isEmpty()) << result.out.toStdString();
    EXPECT_EQ(result.err, u"wendrel: Wendrel stopped while starting; see "_s + log + u"\n"_s);
    EXPECT_TRUE(readFile(log).contains(":64999")) << "the agent's own message is in its log: " << readFile(log).toStdString();
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
