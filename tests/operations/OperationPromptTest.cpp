#include "operations/prompt/AskBeforeRunning.h"
#include "operations/prompt/SettingsPrompt.h"

#include "operations/FileNames.h"
#include "operations/settings/PDFCompressionSettings.h"
#include "operations/settings/SettingsStore.h"
#include "support/JobHarness.h"
#include "support/TestEnvironment.h"

#include <QFile>
#include <QJsonDocument>
#include <QTemporaryDir>

#include <gtest/gtest.h>

using namespace wendrel;
using namespace wendrel::test;

namespace {

using Kind = PromptField::Kind;

// The questions of PDF compression, written against the prompt interface the way its entry
// will declare them: the headline counts the files, the quality level shows in one mode and
// the size in the other, and the switch's caption follows its state.
PromptRequest pdfCompressionView(const PDFCompressionSettings& settings, qsizetype fileCount)
{
    using S = PDFCompressionSettings;
    const auto whenMode = [](S::Mode mode) {
        return PromptCondition{recordKey(&S::mode), {storedSpelling(&S::mode, mode)}};
    };
    const auto quality = [](QualityLevel level) { return storedSpelling(&S::quality, level); };
    return {
        .title = QStringLiteral("Compress"),
        .message = fileCount == 1 ? QStringLiteral("Compress PDF") : QStringLiteral("Compress %1 PDFs").arg(fileCount),
        .fields = {
            {.kind = Kind::choice, .key = recordKey(&S::mode), .label = QStringLiteral("Mode"),
             .option = QStringLiteral("mode"), .value = recordValue(settings, &S::mode),
             .choices = {{storedSpelling(&S::mode, S::Mode::quality), QStringLiteral("Quality")},
                         {storedSpelling(&S::mode, S::Mode::targetSize), QStringLiteral("File size")}},
             .choiceStyle = PromptField::ChoiceStyle::segmented},
            {.kind = Kind::choice, .key = recordKey(&S::quality), .label = QStringLiteral("Quality"),
             .option = QStringLiteral("quality"), .value = recordValue(settings, &S::quality),
             .choices = {{quality(QualityLevel::high), QStringLiteral("High")},
                         {quality(QualityLevel::balanced), QStringLiteral("Balanced")},
                         {quality(QualityLevel::small), QStringLiteral("Small")}},
             .shownWhen = whenMode(S::Mode::quality)},
            {.kind = Kind::number, .key = recordKey(&S::targetMB), .label = QStringLiteral("Size"),
             .option = QStringLiteral("target-mb"), .value = recordValue(settings, &S::targetMB),
             .minimum = 0.01, .maximum = 10'000, .decimals = 2, .unit = QStringLiteral("MB or less"),
             .shownWhen = whenMode(S::Mode::targetSize)},
            {.kind = Kind::toggle, .key = recordKey(&S::rasterize), .label = QStringLiteral("Save pages as images"),
             .option = QStringLiteral("pages-as-images"), .value = recordValue(settings, &S::rasterize),
             .caption = QStringLiteral("Compresses the pictures inside the PDF. Text stays selectable."),
             .captionWhenOn = QStringLiteral("Strongest compression for scans. Text will no longer be selectable or searchable.")},
        },
        .confirmText = QStringLiteral("Compress"),
        .cancelText = QStringLiteral("Cancel"),
    };
}

// Writes "<name> settings.json" holding the settings the job ran with.
OperationOutcome reportSettings(const QString& path, const OperationContext& context)
{
    const PDFCompressionSettings settings = settingsForJob<PDFCompressionSettings>(context);
    const QString name = outputName(path, QStringLiteral("settings"), QStringLiteral("json"));
    return produce(context, path, name, QJsonDocument(settings.toJson()).toJson());
}

FileOperationPtr pdfCompressEntry()
{
    return Op::make({
        .entry = {.id = EntryId::atRunTime(QStringLiteral("test.compressPdf")), .title = QStringLiteral("Compress"),
                  .ring = RingKind::tools, .inputs = {ContentType::item()}},
        .perFile = reportSettings,
        .prompt = settingsPrompt<PDFCompressionSettings>(pdfCompressionView),
    });
}

class OperationPromptTest : public ::testing::Test {
protected:
    void SetUp() override
    {
        QFile::remove(SettingsStore::filePath());
        stored.mode = PDFCompressionSettings::Mode::targetSize;
        stored.targetMB = 5;
        stored.save();
        first = folder.filePath(QStringLiteral("a.pdf"));
        writeFile(first, "%PDF-1.4\n");
    }
    void TearDown() override { QFile::remove(SettingsStore::filePath()); }

    // The settings the job of `entry` ran with, read back from its result.
    PDFCompressionSettings ranWith(const QJsonObject& answers)
    {
        const JobReport report = runJob(runner, {entry, {first}, std::nullopt, answers});
        EXPECT_TRUE(report.succeeded) << report.message.toStdString();
        const QJsonObject json = QJsonDocument::fromJson(readFile(report.results.value(0))).object();
        QFile::remove(report.results.value(0));
        return PDFCompressionSettings::fromJson(json).value_or(PDFCompressionSettings{});
    }

    QTemporaryDir folder;
    QString first;
    PDFCompressionSettings stored;
    FileOperationPtr entry = pdfCompressEntry();
    JobRunner runner;
};

}  // namespace

TEST_F(OperationPromptTest, PromptOpensWithTheStoredSettingsAndCountsTheFiles)
{
    const std::optional<PromptRequest> one = entry->prompt({first});
    ASSERT_TRUE(one);
    EXPECT_EQ(one->message, u"Compress PDF");
    EXPECT_EQ(one->startingAnswers(), stored.toJson());
    EXPECT_EQ(entry->prompt({first, first, first})->message, u"Compress 3 PDFs");
}

TEST_F(OperationPromptTest, ConfirmingStoresTheCompletedAnswers)
{
    QList<PromptRequest> asked;
    const std::optional<QJsonObject> answers = askBeforeRunning(*entry, {first}, [&](const PromptRequest& request) {
        asked.append(request);
        return std::optional(QJsonObject{{QStringLiteral("rasterize"), true}});
    });
    ASSERT_TRUE(answers);
    ASSERT_EQ(asked.size(), 1);
    PDFCompressionSettings expected = stored;
    expected.rasterize = true;
    EXPECT_EQ(*answers, expected.toJson());
    EXPECT_EQ(PDFCompressionSettings::load(), expected);
    EXPECT_EQ(captionFor(*asked.first().field(QStringLiteral("rasterize")), answers->value(QStringLiteral("rasterize"))),
              u"Strongest compression for scans. Text will no longer be selectable or searchable.");
}

// Cancelling, and answers that don't fit, leave nothing to run and store nothing.
TEST_F(OperationPromptTest, CancelledOrUnfitAnswersAreRefusedAndNotStored)
{
    for (const std::optional<QJsonObject>& given :
         {std::optional<QJsonObject>(), std::optional(QJsonObject{{QStringLiteral("targetMB"), -1}}),
          std::optional(QJsonObject{{QStringLiteral("quality"), QStringLiteral("extreme")}}),
          std::optional(QJsonObject{{QStringLiteral("colour"), QStringLiteral("red")}})}) {
        EXPECT_FALSE(askBeforeRunning(*entry, {first}, [&](const PromptRequest&) { return given; }))
            << (given ? QJsonDocument(*given).toJson().toStdString() : "cancelled");
    }
    EXPECT_EQ(PDFCompressionSettings::load(), stored);
}

TEST_F(OperationPromptTest, EntriesWithoutAPromptRunUnasked)
{
    const FileOperationPtr plain = perFileEntry(QStringLiteral("test.plain"), reportSettings);
    EXPECT_FALSE(plain->prompt({first}));
    bool asked = false;
    const std::optional<QJsonObject> answers = askBeforeRunning(*plain, {first}, [&](const PromptRequest&) {
        asked = true;
        return std::optional<QJsonObject>();
    });
    EXPECT_FALSE(asked);
    EXPECT_EQ(answers, QJsonObject());
}

TEST_F(OperationPromptTest, TheJobRunsWithItsAnswersAndLeavesTheStoredSettingsAlone)
{
    PDFCompressionSettings answered = stored;
    answered.mode = PDFCompressionSettings::Mode::quality;
    answered.quality = QualityLevel::small;
    EXPECT_EQ(ranWith(answered.toJson()), answered);
    EXPECT_EQ(PDFCompressionSettings::load(), stored);

    // Part of a record counts too; the rest comes from what is stored.
    PDFCompressionSettings partly = stored;
    partly.targetMB = 0.5;
    EXPECT_EQ(ranWith({{QStringLiteral("targetMB"), 0.5}}), partly);
    // Started without asking, it uses what is stored.
    EXPECT_EQ(ranWith({}), stored);
}

TEST_F(OperationPromptTest, AnswersOfTheWrongTypeFailTheJobBeforeItWrites)
{
    const JobReport report = runJob(runner, {entry, {first}, std::nullopt, {{QStringLiteral("targetMB"), QStringLiteral("five")}}});
    EXPECT_FALSE(report.succeeded);
    EXPECT_EQ(report.message, u"These settings can't be used");
    EXPECT_EQ(folderEntries(folder.path()), QStringList{QStringLiteral("a.pdf")});
}
