#include "imaging/pdf/compress/PdfCompressionSettingsView.h"

#include "imaging/ImagingOperations.h"
#include "operations/OperationCatalog.h"
#include "operations/prompt/AskBeforeRunning.h"
#include "operations/prompt/PromptValues.h"
#include "operations/settings/SettingsStore.h"

#include <QFile>

#include <gtest/gtest.h>

using namespace wendrel;

namespace {

QStringList choiceTitles(const PromptField& field)
{
    QStringList titles;
    for (const PromptChoice& choice : field.choices)
        titles.append(choice.title);
    return titles;
}

// The labels of the fields a person sees while the mode is `mode`, top to bottom.
QStringList shownLabels(const PromptRequest& request, const char* mode)
{
    QJsonObject answers = request.startingAnswers();
    answers.insert(QStringLiteral("mode"), QString::fromUtf8(mode));
    QStringList labels;
    for (const PromptField& field : request.fields) {
        if (request.isShown(field, answers))
            labels.append(field.label);
    }
    return labels;
}

class PdfCompressionSettingsViewTest : public ::testing::Test {
protected:
    void SetUp() override { QFile::remove(SettingsStore::filePath()); }
    void TearDown() override { QFile::remove(SettingsStore::filePath()); }

    const PromptField& field(const char* key) const { return *view.field(QString::fromUtf8(key)); }

    PromptRequest view = pdfCompressionSettingsView(PDFCompressionSettings{}, 1);
};

TEST_F(PdfCompressionSettingsViewTest, EachModeShowsItsOwnTargetAndTheToggleExplainsItself)
{
    for (const auto& [mode, target] : {std::pair{"quality", "Quality"}, {"targetSize", "Size"}})
        EXPECT_EQ(shownLabels(view, mode), (QStringList{QStringLiteral("Mode"), QString::fromUtf8(target),
                                                        QStringLiteral("Save pages as images")}))
            << mode;
    EXPECT_EQ(field("mode").choiceStyle, PromptField::ChoiceStyle::segmented);
    EXPECT_EQ(choiceTitles(field("mode")), (QStringList{QStringLiteral("By quality"), QStringLiteral("To file size")}));
    EXPECT_EQ(choiceTitles(field("quality")),
              (QStringList{QStringLiteral("High"), QStringLiteral("Balanced"), QStringLiteral("Small")}));
    EXPECT_EQ(field("targetMB").unit, u"MB or less");

    const struct {
        bool on;
        const char* caption;
    } captions[] = {
        {false, "Compresses the pictures inside the PDF. Text stays selectable."},
        {true, "Strongest compression for scans. Text will no longer be selectable or searchable."},
    };
    for (const auto& caption : captions)
        EXPECT_EQ(captionFor(field("rasterize"), caption.on), QString::fromUtf8(caption.caption));

    const struct {
        qsizetype files;
        const char* message;
    } messages[] = {{1, "Compress PDF"}, {3, "Compress 3 PDFs"}};
    for (const auto& message : messages) {
        const PromptRequest request = pdfCompressionSettingsView(PDFCompressionSettings{}, message.files);
        EXPECT_EQ(request.message, QString::fromUtf8(message.message));
        EXPECT_EQ(request.title, u"Compress");
        EXPECT_EQ(request.confirmText, u"Compress");
        EXPECT_EQ(request.cancelText, u"Cancel");
    }
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

    // Cancelling runs nothing and keeps what the last sheet saved.
    EXPECT_FALSE(askBeforeRunning(*entry, twoFiles, [](const PromptRequest&) { return std::optional<QJsonObject>(); }));
    EXPECT_EQ(PDFCompressionSettings::load(), confirmed);
}

}  // namespace
