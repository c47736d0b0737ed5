#include "ring/RingModel.h"

#include "platform/FeedbackSounds.h"
#include "operations/JobRunner.h"
#include "operations/OpGroup.h"
#include "operations/OperationCatalog.h"
#include "operations/settings/SettingsStore.h"
#include "support/JobHarness.h"
#include "support/TestEnvironment.h"

#include <QFile>
#include <QSignalSpy>
#include <QTemporaryDir>

#include <gtest/gtest.h>

using namespace wendrel;
using namespace wendrel::test;
using namespace std::chrono_literals;

namespace {

struct CountingSounds : FeedbackSounds {
    void playSuccess() override { ++successes; }
    void playFailure() override { ++failures; }
    int successes = 0;
    int failures = 0;
};

OperationOutcome copyNamed(const QStringList& paths, const OperationContext& context)
{
    return OperationOutcome::files({produce(context, paths.first(), QStringLiteral("copy.txt"), readFile(paths.first()))});
}

FileOperationPtr entry(const QString& id, RingKind ring, QList<ContentType> inputs = {ContentType::item()})
{
    return Op::make({.entry = {.id = EntryId::atRunTime(id), .title = id, .ring = ring, .inputs = std::move(inputs)},
                     .combined = copyNamed});
}

class RingModelTest : public ::testing::Test {
protected:
    void SetUp() override
    {
        QFile::remove(SettingsStore::filePath());
        text = folder.filePath(QStringLiteral("notes.txt"));
        other = folder.filePath(QStringLiteral("other.txt"));
        writeFile(text, "notes");
        writeFile(other, "other");
        model.setFeedback({&sounds, [this] { return soundsWanted; }});
        model.onFinished = [this] { ++finishedCalls; };
    }

    void addEntries(int count, RingKind ring = RingKind::tools)
    {
        for (int index = 0; index < count; ++index)
            catalog.add(entry(QStringLiteral("t.%1").arg(index, 2, 10, QLatin1Char('0')), ring));
    }

    // Waits for the job the model started.
    void waitForJob()
    {
        QSignalSpy ended(&runner, &JobRunner::jobEnded);
        if (runner.status().isRunning()) {
            ASSERT_TRUE(ended.wait(30'000));
        }
    }

    QTemporaryDir folder;
    QString text;
    QString other;
    OperationCatalog catalog;
    JobRunner runner;
    RingModel model{catalog, runner};
    CountingSounds sounds;
    bool soundsWanted = true;
    int finishedCalls = 0;
    const RingModel::TimePoint start = std::chrono::steady_clock::now();
};

}  // namespace

TEST_F(RingModelTest, TwentyThreeEntriesMakeThreePagesAndRepeatsCycleThem)
{
    addEntries(23);
    model.load(RingKind::tools, {text}, false, true);
    EXPECT_EQ(model.pageCount(), 3);
    EXPECT_EQ(model.page(), 0);
    EXPECT_EQ(model.visibleOperations().size(), 10);

    model.load(RingKind::tools, {text}, false, true);
    EXPECT_EQ(model.page(), 1);
    model.load(RingKind::tools, {text}, false, true);
    EXPECT_EQ(model.page(), 2);
    EXPECT_EQ(model.visibleOperations().size(), 3);
    EXPECT_EQ(model.visibleOperations().first()->id(), u"t.20");
    model.load(RingKind::tools, {text}, false, true);
    EXPECT_EQ(model.page(), 0);
}

TEST_F(RingModelTest, OtherFilesOrNoAdvanceStartAtTheFirstPage)
{
    addEntries(23);
    model.load(RingKind::tools, {text}, false, true);
    model.load(RingKind::tools, {text}, false, true);
    ASSERT_EQ(model.page(), 1);
    model.load(RingKind::tools, {other}, false, true);
    EXPECT_EQ(model.page(), 0);
    model.load(RingKind::tools, {other}, false, true);
    model.load(RingKind::tools, {other}, true, false);
    EXPECT_EQ(model.page(), 0);
    EXPECT_TRUE(model.isClickMode());
}

TEST_F(RingModelTest, SwitchRingGoesRoundForTheSameFiles)
{
    addEntries(2, RingKind::convert);
    addEntries(0);
    catalog.add(entry(QStringLiteral("action.copyPath"), RingKind::actions));
    model.load(RingKind::convert, {text}, false, false);
    EXPECT_EQ(model.allOperations().size(), 2);
    model.switchRing();
    EXPECT_EQ(model.kind(), RingKind::tools);
    EXPECT_TRUE(model.visibleOperations().isEmpty());  // "Nothing fits this file"
    model.switchRing();
    EXPECT_EQ(model.kind(), RingKind::actions);
    EXPECT_EQ(model.allOperations().size(), 1);
    model.switchRing();
    EXPECT_EQ(model.kind(), RingKind::convert);
    EXPECT_EQ(model.urls(), QStringList{text});
}

TEST_F(RingModelTest, RestingOnAGroupOpensItAfterTheDwell)
{
    catalog.add(entry(QStringLiteral("image.half"), RingKind::tools));
    catalog.add(OpGroup::make({.entry = {.id = "image.presets", .title = QStringLiteral("Presets"),
                                         .ring = RingKind::tools, .inputs = {ContentType::item()}},
                               .childrenProvider = [](const QStringList&) {
                                   return QList<FileOperationPtr>{entry(QStringLiteral("preset.warm"), RingKind::tools),
                                                                  entry(QStringLiteral("preset.cold"), RingKind::tools)};
                               }}));
    model.load(RingKind::tools, {text}, false, false);
    ASSERT_EQ(model.visibleOperations()[0]->id(), u"image.presets");

    model.setHovered(0, start);
    model.advanceTime(start + 290ms);
    EXPECT_EQ(model.openGroupIndex(), std::nullopt);
    model.setHovered(1, start + 295ms);  // moved on before the dwell
    model.advanceTime(start + 400ms);
    EXPECT_EQ(model.openGroupIndex(), std::nullopt);

    model.setHovered(0, start + 500ms);
    EXPECT_EQ(model.dwellDeadline(), start + 800ms);
    model.advanceTime(start + 800ms);
    EXPECT_EQ(model.openGroupIndex(), 0);
    EXPECT_EQ(model.groupChildren().size(), 2);

    model.switchRing();
    EXPECT_EQ(model.openGroupIndex(), std::nullopt);

    // Chosen outright, by a digit, a click or a drop, a group opens at once and nothing runs.
    model.load(RingKind::tools, {text}, true, false);
    model.activate(0);
    EXPECT_EQ(model.openGroupIndex(), 0);
    EXPECT_FALSE(runner.status().isRunning());
    EXPECT_EQ(runner.status().state, JobStatus::State::idle);
}

TEST_F(RingModelTest, DwellOnALeafAndOutOfRangeIndexesChangeNothing)
{
    addEntries(3);
    model.load(RingKind::tools, {text}, false, false);
    model.setHovered(2, start);
    model.advanceTime(start + 1s);
    EXPECT_EQ(model.openGroupIndex(), std::nullopt);
    model.openGroup(7);
    model.activate(7);
    model.activate(-1);
    EXPECT_FALSE(runner.status().isRunning());
    EXPECT_EQ(finishedCalls, 0);
}

TEST_F(RingModelTest, SuccessfulRunPlaysPopAndAnnouncesTheJob)
{
    addEntries(1);
    model.load(RingKind::tools, {text}, true, false);
    QSignalSpy announced(&model, &RingModel::jobFinished);
    model.activate(0);
    waitForJob();

    ASSERT_EQ(announced.size(), 1);
    const JobEvent event = announced.first().first().value<JobEvent>();
    EXPECT_EQ(event.operationId, u"t.00");
    EXPECT_EQ(event.ring, RingKind::tools);
    EXPECT_TRUE(event.clickMode);
    EXPECT_EQ(event.inputs, QStringList{text});
    EXPECT_EQ(event.results, QStringList{folder.filePath(QStringLiteral("copy.txt"))});
    EXPECT_EQ(sounds.successes, 1);
    EXPECT_EQ(finishedCalls, 1);
}

TEST_F(RingModelTest, RefusedFileFailsWithTheEntrysTitleAndNoEvent)
{
    catalog.add(entry(QStringLiteral("Resize 50%"), RingKind::tools, {ContentType::plainText()}));
    writeFile(folder.filePath(QStringLiteral("blob.qqzx")), QByteArray("\1\2\3", 3));
    model.load(RingKind::tools, {text}, false, false);
    QSignalSpy announced(&model, &RingModel::jobFinished);
    model.activate(0, QStringList{text, folder.filePath(QStringLiteral("blob.qqzx"))});

    EXPECT_EQ(runner.status().state, JobStatus::State::failed);
    EXPECT_EQ(runner.status().message, u"Resize 50% doesn't work with this file");
    EXPECT_EQ(announced.size(), 0);
    EXPECT_EQ(sounds.failures, 1);
    EXPECT_EQ(finishedCalls, 1);
    EXPECT_EQ(folderEntries(folder.path()), (QStringList{QStringLiteral("blob.qqzx"), QStringLiteral("notes.txt"),
                                                         QStringLiteral("other.txt")}));
}

TEST_F(RingModelTest, FeedbackSwitchSilencesTheSounds)
{
    soundsWanted = false;
    addEntries(1);
    model.load(RingKind::tools, {text}, false, false);
    model.activate(0);
    waitForJob();
    EXPECT_EQ(sounds.successes, 0);
    EXPECT_EQ(finishedCalls, 1);
}

TEST_F(RingModelTest, EntriesThatAskRunWithTheAnswersOrNotAtAll)
{
    QJsonObject seenAnswers;
    catalog.add(Op::make({.entry = {.id = EntryId::atRunTime(QStringLiteral("t.asks")), .title = QStringLiteral("Asks"),
                                    .ring = RingKind::tools, .inputs = {ContentType::item()}},
                          .combined = [&](const QStringList& paths, const OperationContext& context) {
                              seenAnswers = context.answers();
                              return copyNamed(paths, context);
                          },
                          .prompt = {.request = [](const QStringList&) {
                                         PromptRequest request;
                                         request.title = QStringLiteral("Asks");
                                         PromptField word;
                                         word.key = QStringLiteral("word");
                                         word.label = QStringLiteral("Word");
                                         word.option = QStringLiteral("word");
                                         word.value = QStringLiteral("x");
                                         request.fields.append(word);
                                         return request;
                                     },
                                     .remember = {}}}));
    model.load(RingKind::tools, {text}, true, false);

    model.askUser = [](const PromptRequest&) { return std::optional<QJsonObject>(); };
    model.activate(0);
    EXPECT_FALSE(runner.status().isRunning());
    EXPECT_EQ(finishedCalls, 0);
    EXPECT_FALSE(QFile::exists(folder.filePath(QStringLiteral("copy.txt"))));

    model.askUser = [](const PromptRequest&) {
        return std::optional<QJsonObject>(QJsonObject{{QStringLiteral("word"), QStringLiteral("yes")}});
    };
    model.activate(0);
    waitForJob();
    EXPECT_EQ(seenAnswers.value(QStringLiteral("word")).toString(), u"yes");
    EXPECT_TRUE(QFile::exists(folder.filePath(QStringLiteral("copy.txt"))));
}
