#include "imaging/pdf/compress/PdfCompressionSettingsView.h"

#include "imaging/ImagingOperations.h"
#include "operations/OperationCatalog.h"
#include "operations/prompt/AskBeforeRunning.h"
#include "operations/prompt/PromptValues.h"
#include "operations/settings/SettingsStore.h"
#include "support/PromptSheet.h"

#include <QFile>

#include <gtest/gtest.h>

using namespace wendrel;

namespace {

using test::shownFields;

class PdfCompressionSettingsViewTest : public ::testing::Test {
protected:
    void SetUp() override { QFile::remove(SettingsStore::filePath()); }
    void TearDown() override { QFile::remove(SettingsStore::filePath()); }

    PromptRequest view = pdfCompressionSettingsView(PDFCompressionSettings{}, 1);
};

TEST_F(PdfCompressionSettingsViewTest, EachModeShowsItsOwnTargetAndTheToggleExplainsItself)
{
    const QString mode = QStringLiteral("Mode: By quality | To file size");
    const struct {
        PDFCompressionSettings settings;
        QStringList shown;
    } cases[] = {
        {{}, {mode, QStringLiteral("Quality: High | Balanced | Small"),
              QStringLiteral("Save pages as images: Compresses the pictures inside the PDF. Text stays selectable.")}},
        {{.mode = PDFCompressionSettings::Mode::targetSize, .rasterize = true},
         {mode, QStringLiteral("Size: MB or less"),
          QStringLiteral("Save pages as images: Strongest compression for scans. Text will no longer be selectable or searchable.")}},
    };
    for (const auto& testCase : cases)
        EXPECT_EQ(shownFields(view, testCase.settings.toJson()), testCase.shown) << testCase.shown[1].toStdString();
    EXPECT_EQ(view.field(QStringLiteral("mode"))->choiceStyle, PromptField::ChoiceStyle::segmented);
    EXPECT_EQ(view.message, u"Compress PDF");
    EXPECT_EQ(view.title, u"Compress");
    EXPECT_EQ(view.confirmText, u"Compress");
    EXPECT_EQ(view.cancelText, u"Cancel");
}

// The command line answers with the same fields: --mode, --quality, --target-mb, --rasterize.
TEST_F(PdfCompressionSettingsViewTest, CommandLineOptionsAnswerTheFields)
{
    const struct {
        QList<std::pair<QString, QString>> options;
        PDFCompressionSettings expected;
    } cases[] = {
        {{{QStringLiteral("quality"), QStringLiteral("small")}}, {.quality = QualityLevel::small}},
        {{{QStringLiteral("target-mb"), QStringLiteral("1.5")}}, {.mode = PDFCompressionSettings::Mode::targetSize, .targetMB = 1.5}},
        {{{QStringLiteral("mode"), QStringLiteral("size")}, {QStringLiteral("rasterize"), QStringLiteral("yes")}},
         {.mode = PDFCompressionSettings::Mode::targetSize, .rasterize = true}},
    };
    for (const auto& testCase : cases) {
        const CheckedAnswers answers = answersFromOptions(view, testCase.options);
        ASSERT_TRUE(answers.isValid()) << answers.problem.toStdString();
        EXPECT_EQ(PDFCompressionSettings::fromJson(answers.answers), testCase.expected) << testCase.options.first().first.toStdString();
    }
}

// The entry asks with this sheet; how asking stores and cancels is the prompt's own (see the
// operations tests).
TEST_F(PdfCompressionSettingsViewTest, TheEntryAsksWithTheStoredSettingsAndConfirmingSavesThem)
{
    OperationCatalog catalog;
    registerImagingOperations(catalog);
    const FileOperationPtr entry = catalog.find(QStringLiteral("pdf.compress"));
    ASSERT_TRUE(entry);

    PDFCompressionSettings stored;
    stored.quality = QualityLevel::high;
    stored.save();

    const QStringList twoFiles{QStringLiteral("/a.pdf"), QStringLiteral("/b.pdf")};
    std::optional<PromptRequest> asked;
    const std::optional<QJsonObject> answers = askBeforeRunning(*entry, twoFiles, [&](const PromptRequest& request) {
        asked = request;
        return std::optional(QJsonObject{{QStringLiteral("mode"), QStringLiteral("targetSize")}, {QStringLiteral("targetMB"), 0.5}});
    });
    ASSERT_TRUE(asked && answers);
    EXPECT_EQ(asked->message, u"Compress 2 PDFs");
    EXPECT_EQ(asked->startingAnswers(), stored.toJson());

    PDFCompressionSettings confirmed = stored;
    confirmed.mode = PDFCompressionSettings::Mode::targetSize;
    confirmed.targetMB = 0.5;
    EXPECT_EQ(PDFCompressionSettings::load(), confirmed);
    EXPECT_EQ(*answers, confirmed.toJson());
}

}  // namespace
