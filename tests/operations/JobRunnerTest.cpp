#include "operations/JobRunner.h"

#include "operations/FileNames.h"
#include "operations/OperationError.h"
#include "operations/ResultPlacement.h"
#include "operations/UndoStore.h"
#include "support/JobHarness.h"
#include "support/TestEnvironment.h"

#include <QDir>
#include <QFileInfo>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QThread>
#include <QTimer>

#include <gtest/gtest.h>

#include <chrono>
#include <condition_variable>
#include <mutex>
#include <thread>

using namespace wendrel;
using namespace wendrel::test;

namespace {

// Converts a file to "<base>.out" holding the input's bytes reversed, the way a real per-file
// conversion names its result.
ProducedFile reversed(const QString& path, const OperationContext& context)
{
    QByteArray bytes = readFile(path);
    std::reverse(bytes.begin(), bytes.end());
    return produce(context, path, outputName(path, std::nullopt, QStringLiteral("out")), bytes);
}

class JobRunnerTest : public ::testing::Test {
protected:
    void SetUp() override { ASSERT_TRUE(leftoverScratchFolders().isEmpty()); }

    void TearDown() override
    {
        EXPECT_TRUE(leftoverScratchFolders().isEmpty()) << "a scratch folder was left behind";
        QDir(resultsFolder()).removeRecursively();
    }

    QString file(const QString& name, const QByteArray& bytes)
    {
        const QString path = folder.filePath(name);
        writeFile(path, bytes);
        return path;
    }

    QString at(const char* name) const { return folder.filePath(QString::fromUtf8(name)); }

    QTemporaryDir folder;
    UndoStore undo;
    JobRunner runner{&undo};
};

}  // namespace

// One per-file job over twelve files that meets every placement rule at once: same-named
// results, names taken by earlier files and by a folder, a file that fails, notes, and early
// files that take longest so that parallel runs finish out of order.
TEST_F(JobRunnerTest, PerFileJobPlacesEveryResultInInputOrderBesideItsOriginal)
{
    QStringList inputs;
    for (int index = 0; index < 10; ++index)
        inputs.append(file(QStringLiteral("file%1.txt").arg(index), QByteArray::number(index)));
    inputs.append({file(QStringLiteral("Photo.heic"), "h"), file(QStringLiteral("Photo.png"), "p"),
                   file(QStringLiteral("bad.txt"), "bad")});
    writeFile(at("Photo.out"), "earlier");
    QDir(folder.path()).mkdir(QStringLiteral("file0.out"));

    const auto slowFirst = [](const QString& path, const OperationContext& context) {
        const QByteArray bytes = readFile(path);
        if (bytes == "bad")
            throw OperationError(QStringLiteral("No subtitles found"));
        std::this_thread::sleep_for(std::chrono::milliseconds(4 * (10 - bytes.toInt())));
        ProducedFile result = reversed(path, context);
        if (bytes == "h" || bytes == "p")
            result.note = QStringLiteral("a note");
        return result;
    };
    const JobReport report = runJob(runner, perFileEntry(QStringLiteral("t.slow"), slowFirst), inputs);

    ASSERT_TRUE(report.succeeded) << report.message.toStdString();
    QStringList expected{at("file0 2.out")};
    for (int index = 1; index < 10; ++index)
        expected.append(folder.filePath(QStringLiteral("file%1.out").arg(index)));
    expected.append({at("Photo 2.out"), at("Photo 3.out")});
    EXPECT_EQ(report.results, expected);
    EXPECT_EQ(report.message, u"12 files created (a note)");
    EXPECT_EQ(readFile(at("Photo.out")), "earlier");
    EXPECT_EQ(readFile(at("Photo 2.out")), "h");
    EXPECT_EQ(readFile(at("file7.txt")), "7");
    EXPECT_TRUE(QFileInfo(at("file0.out")).isDir());
    ASSERT_EQ(report.failures.size(), 1);
    EXPECT_EQ(report.failures.first().source, at("bad.txt"));
    EXPECT_EQ(report.failures.first().message, u"No subtitles found");
    EXPECT_FALSE(QFileInfo::exists(at("bad.out")));
    EXPECT_EQ(runner.status().state, JobStatus::State::finished);
    EXPECT_EQ(undo.lastResults(), report.results);
}

TEST_F(JobRunnerTest, PerFileRunsShareTheCores)
{
    if (QThread::idealThreadCount() < 2)
        GTEST_SKIP() << "one core: nothing runs side by side";
    // Each run waits until the other has started: run one after the other, they would time out.
    std::mutex mutex;
    std::condition_variable arrived;
    int started = 0;
    const auto rendezvous = [&](const QString& path, const OperationContext& context) {
        std::unique_lock lock(mutex);
        ++started;
        arrived.notify_all();
        if (!arrived.wait_for(lock, std::chrono::seconds(60), [&] { return started >= 2; }))
            throw OperationError(QStringLiteral("ran alone"));
        lock.unlock();
        return reversed(path, context);
    };
    const JobReport report = runJob(runner, perFileEntry(QStringLiteral("t.pair"), rendezvous),
                                    {file(QStringLiteral("a.txt"), "a"), file(QStringLiteral("b.txt"), "b")});
    EXPECT_TRUE(report.succeeded) << report.message.toStdString();
    EXPECT_TRUE(report.failures.isEmpty());
}

TEST_F(JobRunnerTest, CombiningEntryRunsOnceWithAllFilesInOrder)
{
    QList<QStringList> calls;
    const auto concatenate = [&](const QStringList& paths, const OperationContext& context) {
        calls.append(paths);
        QByteArray joined;
        for (const QString& path : paths)
            joined += readFile(path);
        return OperationOutcome::files({produce(context, paths.first(), QStringLiteral("Joined.txt"), joined)});
    };
    const QStringList inputs{file(QStringLiteral("b.txt"), "B"), file(QStringLiteral("a.txt"), "A"),
                             file(QStringLiteral("c.txt"), "C")};
    const JobReport report = runJob(runner, combinedEntry(QStringLiteral("t.join"), concatenate), inputs);

    EXPECT_EQ(calls, QList<QStringList>{inputs});
    EXPECT_EQ(readFile(at("Joined.txt")), "BAC");
    EXPECT_EQ(report.message, u"Joined.txt");
}

// How a job that places nothing ends: its message, whether that is a failure, and in every
// case the originals alone in their folder, the earlier undo record kept, no scratch left.
TEST_F(JobRunnerTest, JobsThatPlaceNothingReportWhyAndLeaveNoTrace)
{
    struct Row {
        const char* name;
        Op::PerFileBody body;
        bool succeeded;
        const char* message;
    };
    const QList<Row> rows{
        {"OperationError: the last file's message",
         [](const QString& path, const OperationContext&) -> OperationOutcome {
             throw OperationError(QStringLiteral("Can't read ") + QFileInfo(path).fileName());
         },
         false, "Can't read b.txt"},
        {"another exception: its own description",
         [](const QString&, const OperationContext&) -> OperationOutcome { throw std::runtime_error("disk on fire"); },
         false, "disk on fire"},
        {"anything else", [](const QString&, const OperationContext&) -> OperationOutcome { throw 42; }, false,
         "Something went wrong"},
        {"a half-written result never lands",
         [](const QString& path, const OperationContext& context) -> OperationOutcome {
             produce(context, path, QStringLiteral("partial.txt"), "half");
             throw OperationError(QStringLiteral("Couldn't finish"));
         },
         false, "Couldn't finish"},
        {"done: its message, nothing to undo",
         [](const QString&, const OperationContext&) { return OperationOutcome::done(QStringLiteral("Path copied")); },
         true, "Path copied"},
        {"no files: nothing to do",
         [](const QString&, const OperationContext&) { return OperationOutcome::files({}); }, true, "Nothing to do"},
    };
    const QStringList inputs{file(QStringLiteral("a.txt"), "a"), file(QStringLiteral("b.txt"), "b")};
    undo.record({QStringLiteral("/earlier/result.jpg")});
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        const JobReport report = runJob(runner, perFileEntry(QStringLiteral("t.row"), row.body), inputs);
        EXPECT_EQ(report.succeeded, row.succeeded);
        EXPECT_EQ(report.message, QString::fromUtf8(row.message));
        EXPECT_TRUE(report.results.isEmpty());
        EXPECT_EQ(runner.status().state, row.succeeded ? JobStatus::State::finished : JobStatus::State::failed);
        EXPECT_EQ(runner.status().message, QString::fromUtf8(row.message));
        EXPECT_EQ(undo.lastResults(), QStringList{QStringLiteral("/earlier/result.jpg")});
        EXPECT_EQ(folderEntries(folder.path()), (QStringList{QStringLiteral("a.txt"), QStringLiteral("b.txt")}));
        EXPECT_TRUE(leftoverScratchFolders().isEmpty());
    }
}

// Where results go when they can't go beside the original, or were asked to go elsewhere.
TEST_F(JobRunnerTest, ResultsGoToTheChosenFolderOrElseToDownloadsWendrel)
{
    QTemporaryDir elsewhere;
    const QString talk = file(QStringLiteral("talk.srt"), "abc");
    JobReport report = runJob(runner, perFileEntry(QStringLiteral("t.reverse"), reversed), {talk}, elsewhere.path());
    EXPECT_EQ(report.results, QStringList{elsewhere.filePath(QStringLiteral("talk.out"))});
    EXPECT_EQ(folderEntries(folder.path()), QStringList{QStringLiteral("talk.srt")});

    // The original's folder disappears while the job runs (an unplugged drive, a deleted
    // folder): the result still lands, in the fallback folder.
    QTemporaryDir vanishing;
    const QString source = vanishing.filePath(QStringLiteral("talk.srt"));
    writeFile(source, "abc");
    const auto convertThenLoseFolder = [&](const QString& path, const OperationContext& context) {
        ProducedFile result = reversed(path, context);
        QDir(vanishing.path()).removeRecursively();
        return result;
    };
    report = runJob(runner, perFileEntry(QStringLiteral("t.lost"), convertThenLoseFolder), {source});
    ASSERT_TRUE(report.succeeded) << report.message.toStdString();
    EXPECT_EQ(report.results, QStringList{resultsFolder() + QStringLiteral("/talk.out")});
    EXPECT_EQ(readFile(report.results.first()), "cba");
    EXPECT_TRUE(resultsFolder().startsWith(QDir::homePath() + QStringLiteral("/Downloads/")));
}

TEST_F(JobRunnerTest, CancelledJobPlacesNothingAndCleansUp)
{
    std::atomic_bool started{false};
    const auto waitForCancel = [&](const QString& path, const OperationContext& context) {
        produce(context, path, QStringLiteral("early.txt"), "x");
        started = true;
        for (int tick = 0; tick < 6000 && !context.isCancelled(); ++tick)
            std::this_thread::sleep_for(std::chrono::milliseconds(10));
        context.throwIfCancelled();
        return reversed(path, context);
    };
    QTimer cancelOnceStarted;
    QObject::connect(&cancelOnceStarted, &QTimer::timeout, &runner, [&] {
        if (started)
            runner.cancel();
    });
    cancelOnceStarted.start(5);
    const JobReport report = runJob(runner, perFileEntry(QStringLiteral("t.cancel"), waitForCancel),
                                    {file(QStringLiteral("a.txt"), "a"), file(QStringLiteral("b.txt"), "b")});

    EXPECT_FALSE(report.succeeded);
    EXPECT_EQ(report.message, u"Cancelled");
    EXPECT_EQ(folderEntries(folder.path()), (QStringList{QStringLiteral("a.txt"), QStringLiteral("b.txt")}));
}

// One job at a time, and its status runs from running through progress to finished.
TEST_F(JobRunnerTest, OneJobAtATimeWithItsStatusFromStartToEnd)
{
    std::atomic_bool release{false};
    const auto blocked = [&](const QStringList& paths, const OperationContext& context) {
        context.progress(0.5);
        while (!release)
            std::this_thread::sleep_for(std::chrono::milliseconds(2));
        return OperationOutcome::files({reversed(paths.first(), context)});
    };
    QList<JobStatus> seen;
    QObject::connect(&runner, &JobRunner::statusChanged, &runner, [&] {
        seen.append(runner.status());
        if (runner.status().progress == 0.5)
            release = true;  // the progress got through: let the job end
    });
    QSignalSpy ended(&runner, &JobRunner::jobEnded);
    ASSERT_TRUE(runner.run(combinedEntry(QStringLiteral("t.blocked"), blocked), {file(QStringLiteral("first.txt"), "1")}));
    EXPECT_TRUE(runner.status().isRunning());
    EXPECT_FALSE(runner.run(perFileEntry(QStringLiteral("t.reverse"), reversed), {file(QStringLiteral("second.txt"), "2")}));

    ASSERT_TRUE(ended.wait(60'000));
    EXPECT_EQ(ended.size(), 1);
    EXPECT_EQ(runner.status().results, QStringList{at("first.out")});
    EXPECT_FALSE(QFileInfo::exists(at("second.out")));
    ASSERT_GE(seen.size(), 2);
    EXPECT_EQ(seen.first().state, JobStatus::State::running);
    EXPECT_EQ(seen.first().title, u"t.blocked");
    EXPECT_EQ(seen.first().progress, 0.0);
    EXPECT_EQ(seen.last().state, JobStatus::State::finished);
    for (const JobStatus& status : seen) {
        if (status.isRunning()) {
            EXPECT_TRUE(status.progress == 0.0 || status.progress == 0.5);
        }
    }
    runner.reset();
    EXPECT_EQ(runner.status().state, JobStatus::State::idle);
}
