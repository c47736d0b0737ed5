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

// Converts each file to "<base>.out" holding the input's bytes reversed, the way a real
// per-file conversion names its result.
OperationOutcome reverseEach(const QStringList& paths, const OperationContext& context)
{
    QList<ProducedFile> produced;
    for (const QString& path : paths) {
        QByteArray bytes = readFile(path);
        std::reverse(bytes.begin(), bytes.end());
        produced.append(produce(context, path, outputName(path, std::nullopt, QStringLiteral("out")), bytes));
    }
    return OperationOutcome::files(produced);
}

class JobRunnerTest : public ::testing::Test {
protected:
    void SetUp() override { ASSERT_TRUE(leftoverScratchFolders().isEmpty()); }

    void TearDown() override
    {
        EXPECT_TRUE(leftoverScratchFolders().isEmpty()) << "a scratch folder was left behind";
        QDir(resultsFolder()).removeRecursively();
    }

    QString file(const char* name, const QByteArray& bytes)
    {
        const QString path = folder.filePath(QString::fromUtf8(name));
        writeFile(path, bytes);
        return path;
    }

    QTemporaryDir folder;
    UndoStore undo;
    JobRunner runner{&undo};
};

}  // namespace

TEST_F(JobRunnerTest, PlacesResultsNextToOriginalsAndLeavesOriginalsUntouched)
{
    const QString talk = file("talk.srt", "abc");
    const JobReport report = runJob(runner, makeEntry(QStringLiteral("t.reverse"), reverseEach), {talk});

    ASSERT_TRUE(report.succeeded) << report.message.toStdString();
    EXPECT_EQ(report.results, QStringList{folder.filePath(QStringLiteral("talk.out"))});
    EXPECT_EQ(report.message, u"talk.out");
    EXPECT_EQ(readFile(folder.filePath(QStringLiteral("talk.out"))), "cba");
    EXPECT_EQ(readFile(talk), "abc");
    EXPECT_EQ(runner.status().state, JobStatus::State::finished);
    EXPECT_EQ(undo.lastResults(), report.results);
}

TEST_F(JobRunnerTest, SecondRunAndSameNamedResultsGetCounters)
{
    // Photo.heic and Photo.png both become Photo.out in one job; an earlier Photo.out stays.
    const QString heic = file("Photo.heic", "1");
    const QString png = file("Photo.png", "2");
    writeFile(folder.filePath(QStringLiteral("Photo.out")), "earlier");

    const JobReport report = runJob(runner, makeEntry(QStringLiteral("t.reverse"), reverseEach), {heic, png});

    ASSERT_TRUE(report.succeeded);
    EXPECT_EQ(report.results, (QStringList{folder.filePath(QStringLiteral("Photo 2.out")),
                                           folder.filePath(QStringLiteral("Photo 3.out"))}));
    EXPECT_EQ(report.message, u"2 files created");
    EXPECT_EQ(readFile(folder.filePath(QStringLiteral("Photo.out"))), "earlier");
    EXPECT_EQ(readFile(folder.filePath(QStringLiteral("Photo 2.out"))), "1");
    EXPECT_EQ(readFile(folder.filePath(QStringLiteral("Photo 3.out"))), "2");
}

TEST_F(JobRunnerTest, FolderWithTheResultsNameCountsAsTaken)
{
    const QString talk = file("talk.srt", "abc");
    QDir(folder.path()).mkdir(QStringLiteral("talk.out"));
    const JobReport report = runJob(runner, makeEntry(QStringLiteral("t.reverse"), reverseEach), {talk});
    EXPECT_EQ(report.results, QStringList{folder.filePath(QStringLiteral("talk 2.out"))});
    EXPECT_TRUE(QFileInfo(folder.filePath(QStringLiteral("talk.out"))).isDir());
}

TEST_F(JobRunnerTest, ResultsKeepInputOrderWhenFilesRunInParallel)
{
    QStringList inputs;
    for (int index = 0; index < 12; ++index)
        inputs.append(file(qPrintable(QStringLiteral("file%1.txt").arg(index)), QByteArray::number(index)));
    // Early files take longest, so with parallel runs they finish last.
    const auto slowFirst = [](const QStringList& paths, const OperationContext& context) {
        const int index = readFile(paths.first()).toInt();
        std::this_thread::sleep_for(std::chrono::milliseconds(5 * (12 - index)));
        return reverseEach(paths, context);
    };
    const JobReport report = runJob(runner, makeEntry(QStringLiteral("t.slow"), slowFirst), inputs);

    ASSERT_EQ(report.results.size(), 12);
    for (int index = 0; index < 12; ++index)
        EXPECT_EQ(QFileInfo(report.results[index]).fileName(), QStringLiteral("file%1.out").arg(index));
}

TEST_F(JobRunnerTest, PerFileRunsShareTheCores)
{
    if (QThread::idealThreadCount() < 2)
        GTEST_SKIP() << "one core: nothing runs side by side";
    // Each run waits until the other has started: run one after the other, they would time out.
    std::mutex mutex;
    std::condition_variable arrived;
    int started = 0;
    const auto rendezvous = [&](const QStringList& paths, const OperationContext& context) {
        std::unique_lock lock(mutex);
        ++started;
        arrived.notify_all();
        if (!arrived.wait_for(lock, std::chrono::seconds(20), [&] { return started >= 2; }))
            throw OperationError(QStringLiteral("ran alone"));
        lock.unlock();
        return reverseEach(paths, context);
    };
    const JobReport report = runJob(runner, makeEntry(QStringLiteral("t.pair"), rendezvous),
                                    {file("a.txt", "a"), file("b.txt", "b")});
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
    const QStringList inputs{file("b.txt", "B"), file("a.txt", "A"), file("c.txt", "C")};
    const JobReport report =
        runJob(runner, makeEntry(QStringLiteral("t.join"), concatenate, /*combinesInputs=*/true), inputs);

    EXPECT_EQ(calls, QList<QStringList>{inputs});
    EXPECT_EQ(readFile(folder.filePath(QStringLiteral("Joined.txt"))), "BAC");
    EXPECT_EQ(report.message, u"Joined.txt");
}

TEST_F(JobRunnerTest, FailingFileDoesNotStopTheOthers)
{
    const auto failOnBad = [](const QStringList& paths, const OperationContext& context) {
        if (readFile(paths.first()) == "bad")
            throw OperationError(QStringLiteral("No subtitles found"));
        return reverseEach(paths, context);
    };
    const QString good1 = file("one.txt", "1");
    const QString bad = file("two.txt", "bad");
    const QString good2 = file("three.txt", "3");
    const JobReport report = runJob(runner, makeEntry(QStringLiteral("t.mixed"), failOnBad), {good1, bad, good2});

    ASSERT_TRUE(report.succeeded);
    EXPECT_EQ(report.results, (QStringList{folder.filePath(QStringLiteral("one.out")),
                                           folder.filePath(QStringLiteral("three.out"))}));
    ASSERT_EQ(report.failures.size(), 1);
    EXPECT_EQ(report.failures.first().source, bad);
    EXPECT_EQ(report.failures.first().message, u"No subtitles found");
    EXPECT_FALSE(QFileInfo::exists(folder.filePath(QStringLiteral("two.out"))));
}

TEST_F(JobRunnerTest, JobFailsWithTheLastErrorWhenNothingWasPlaced)
{
    const auto alwaysFail = [](const QStringList& paths, const OperationContext&) -> OperationOutcome {
        throw OperationError(QStringLiteral("Can't read ") + QFileInfo(paths.first()).fileName());
    };
    undo.record({QStringLiteral("/earlier/result.jpg")});
    const JobReport report = runJob(runner, makeEntry(QStringLiteral("t.fail"), alwaysFail),
                                    {file("a.txt", "a"), file("b.txt", "b")});

    EXPECT_FALSE(report.succeeded);
    EXPECT_EQ(report.message, u"Can't read b.txt");
    EXPECT_EQ(runner.status().state, JobStatus::State::failed);
    EXPECT_EQ(runner.status().message, u"Can't read b.txt");
    EXPECT_EQ(undo.lastResults(), QStringList{QStringLiteral("/earlier/result.jpg")});
    EXPECT_EQ(folderEntries(folder.path()), (QStringList{QStringLiteral("a.txt"), QStringLiteral("b.txt")}));
}

TEST_F(JobRunnerTest, OtherExceptionsShowTheirOwnDescription)
{
    const auto throwStd = [](const QStringList&, const OperationContext&) -> OperationOutcome {
        throw std::runtime_error("disk on fire");
    };
    const auto throwOdd = [](const QStringList&, const OperationContext&) -> OperationOutcome { throw 42; };
    EXPECT_EQ(runJob(runner, makeEntry(QStringLiteral("t.std"), throwStd), {file("a.txt", "a")}).message,
              u"disk on fire");
    EXPECT_EQ(runJob(runner, makeEntry(QStringLiteral("t.odd"), throwOdd), {file("a.txt", "a")}).message,
              u"Something went wrong");
}

TEST_F(JobRunnerTest, HalfWrittenOutputOfAFailedRunNeverLands)
{
    const auto writeThenFail = [](const QStringList& paths, const OperationContext& context) -> OperationOutcome {
        produce(context, paths.first(), QStringLiteral("partial.txt"), "half");
        throw OperationError(QStringLiteral("Couldn't finish"));
    };
    const JobReport report = runJob(runner, makeEntry(QStringLiteral("t.partial"), writeThenFail), {file("a.txt", "a")});
    EXPECT_FALSE(report.succeeded);
    EXPECT_EQ(folderEntries(folder.path()), QStringList{QStringLiteral("a.txt")});
}

TEST_F(JobRunnerTest, DoneOutcomeShowsItsMessageAndLeavesUndoAlone)
{
    undo.record({QStringLiteral("/earlier/result.jpg")});
    const auto copyPaths = [](const QStringList&, const OperationContext&) {
        return OperationOutcome::done(QStringLiteral("Path copied"));
    };
    const JobReport report = runJob(runner, makeEntry(QStringLiteral("t.done"), copyPaths), {file("a.txt", "a")});
    EXPECT_TRUE(report.succeeded);
    EXPECT_EQ(report.message, u"Path copied");
    EXPECT_TRUE(report.results.isEmpty());
    EXPECT_EQ(undo.lastResults(), QStringList{QStringLiteral("/earlier/result.jpg")});
}

TEST_F(JobRunnerTest, EmptyResultIsNothingToDoNotAFailure)
{
    const auto nothing = [](const QStringList&, const OperationContext&) { return OperationOutcome::files({}); };
    const JobReport report = runJob(runner, makeEntry(QStringLiteral("t.none"), nothing), {file("a.txt", "a")});
    EXPECT_TRUE(report.succeeded);
    EXPECT_EQ(report.message, u"Nothing to do");
}

TEST_F(JobRunnerTest, UnwritableFolderFallsBackToDownloadsWendrel)
{
    // The original's folder disappears while the job runs (an unplugged drive, a deleted
    // folder): the result still lands, in the fallback folder.
    QTemporaryDir vanishing;
    const QString source = vanishing.filePath(QStringLiteral("talk.srt"));
    writeFile(source, "abc");
    const auto convertThenLoseFolder = [&](const QStringList& paths, const OperationContext& context) {
        OperationOutcome outcome = reverseEach(paths, context);
        QDir(vanishing.path()).removeRecursively();
        return outcome;
    };
    const JobReport report = runJob(runner, makeEntry(QStringLiteral("t.lost"), convertThenLoseFolder), {source});

    ASSERT_TRUE(report.succeeded) << report.message.toStdString();
    EXPECT_EQ(report.results, QStringList{resultsFolder() + QStringLiteral("/talk.out")});
    EXPECT_EQ(readFile(report.results.first()), "cba");
    EXPECT_TRUE(resultsFolder().startsWith(QDir::homePath() + QStringLiteral("/Downloads/")));
}

TEST_F(JobRunnerTest, DestinationFolderReceivesResultsInstead)
{
    QTemporaryDir elsewhere;
    const QString talk = file("talk.srt", "abc");
    const JobReport report =
        runJob(runner, makeEntry(QStringLiteral("t.reverse"), reverseEach), {talk}, elsewhere.path());
    EXPECT_EQ(report.results, QStringList{elsewhere.filePath(QStringLiteral("talk.out"))});
    EXPECT_EQ(folderEntries(folder.path()), QStringList{QStringLiteral("talk.srt")});
}

TEST_F(JobRunnerTest, CancelledJobPlacesNothingAndCleansUp)
{
    std::atomic_bool started{false};
    const auto waitForCancel = [&](const QStringList& paths, const OperationContext& context) {
        produce(context, paths.first(), QStringLiteral("early.txt"), "x");
        started = true;
        for (int tick = 0; tick < 2000 && !context.isCancelled(); ++tick)
            std::this_thread::sleep_for(std::chrono::milliseconds(10));
        context.throwIfCancelled();
        return reverseEach(paths, context);
    };
    QTimer cancelOnceStarted;
    QObject::connect(&cancelOnceStarted, &QTimer::timeout, &runner, [&] {
        if (started)
            runner.cancel();
    });
    cancelOnceStarted.start(5);
    const JobReport report =
        runJob(runner, makeEntry(QStringLiteral("t.cancel"), waitForCancel), {file("a.txt", "a"), file("b.txt", "b")});

    EXPECT_FALSE(report.succeeded);
    EXPECT_EQ(report.message, u"Cancelled");
    EXPECT_EQ(folderEntries(folder.path()), (QStringList{QStringLiteral("a.txt"), QStringLiteral("b.txt")}));
}

TEST_F(JobRunnerTest, RefusesASecondJobWhileOneRuns)
{
    std::atomic_bool release{false};
    const auto blocked = [&](const QStringList& paths, const OperationContext& context) {
        while (!release)
            std::this_thread::sleep_for(std::chrono::milliseconds(2));
        return reverseEach(paths, context);
    };
    const QString first = file("first.txt", "1");
    QSignalSpy ended(&runner, &JobRunner::jobEnded);
    ASSERT_TRUE(runner.run(makeEntry(QStringLiteral("t.blocked"), blocked), {first}));
    EXPECT_TRUE(runner.status().isRunning());
    EXPECT_FALSE(runner.run(makeEntry(QStringLiteral("t.reverse"), reverseEach), {file("second.txt", "2")}));

    release = true;
    ASSERT_TRUE(ended.wait(60'000));
    EXPECT_EQ(ended.size(), 1);
    EXPECT_EQ(runner.status().results, QStringList{folder.filePath(QStringLiteral("first.out"))});
    EXPECT_FALSE(QFileInfo::exists(folder.filePath(QStringLiteral("second.out"))));
}

TEST_F(JobRunnerTest, StatusRunsFromRunningThroughProgressToFinished)
{
    QList<JobStatus> seen;
    QObject::connect(&runner, &JobRunner::statusChanged, &runner, [&] { seen.append(runner.status()); });
    const auto halfway = [](const QStringList& paths, const OperationContext& context) {
        context.progress(0.5);
        std::this_thread::sleep_for(std::chrono::milliseconds(50));  // let the update through
        return reverseEach(paths, context);
    };
    runJob(runner, makeEntry(QStringLiteral("t.progress"), halfway, /*combinesInputs=*/true), {file("a.txt", "a")});

    ASSERT_GE(seen.size(), 2);
    EXPECT_EQ(seen.first().state, JobStatus::State::running);
    EXPECT_EQ(seen.first().title, u"t.progress");
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
