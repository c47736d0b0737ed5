#include "imaging/compress/CompressionSettingsView.h"

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

class CompressionSettingsViewTest : public ::testing::Test {
protected:
    void SetUp() override { QFile::remove(SettingsStore::filePath()); }
    void TearDown() override { QFile::remove(SettingsStore::filePath()); }

    const PromptField& field(const char* key) const { return *view.field(QString::fromUtf8(key)); }

    PromptRequest view = compressionSettingsView(CompressionSettings{}, 1);
};

}  // namespace

// Each mode shows its own target between the mode and the pickers every mode shares. (The
// sheet's other texts and the counted confirm button are checked where they are shown: in the
// dialog's and the terminal's tests.)
TEST_F(CompressionSettingsViewTest, EachModeShowsItsOwnTargetAndTheSameChoices)
{
    for (const auto& [mode, target] : {std::pair{"targetSize", "Size"}, {"reduceBy", "Smaller by"}, {"quality", "Quality"}})
        EXPECT_EQ(shownLabels(view, mode), (QStringList{QStringLiteral("Mode"), QString::fromUtf8(target),
                                                        QStringLiteral("Longest side"), QStringLiteral("Format")}))
            << mode;
    EXPECT_EQ(field("mode").choiceStyle, PromptField::ChoiceStyle::segmented);
    EXPECT_EQ(field("targetMB").unit, u"MB or less");
    EXPECT_EQ(choiceTitles(field("maxDimension")),
              (QStringList{QStringLiteral("Keep original"), QStringLiteral("3840 px"), QStringLiteral("2560 px"),
                           QStringLiteral("1920 px"), QStringLiteral("1280 px"), QStringLiteral("800 px")}));
    EXPECT_EQ(field("maxDimension").choices.first().value, QJsonValue(0));
    EXPECT_EQ(choiceTitles(field("format")), (QStringList{QStringLiteral("JPEG"), QStringLiteral("HEIC")}));
}

TEST_F(CompressionSettingsViewTest, TheEntryAsksWithTheStoredSettingsAndConfirmingSavesThem)
{
    OperationCatalog catalog;
    registerImagingOperations(catalog);
    const FileOperationPtr entry = catalog.find(QStringLiteral("image.compress"));
    ASSERT_TRUE(entry);

    CompressionSettings stored;
    stored.mode = CompressionSettings::Mode::quality;
    stored.qualityPercent = 40;
    stored.save();

    const QStringList threeFiles{QStringLiteral("/a.jpg"), QStringLiteral("/b.jpg"), QStringLiteral("/c.jpg")};
    std::optional<PromptRequest> asked;
    const std::optional<QJsonObject> answers = askBeforeRunning(*entry, threeFiles, [&](const PromptRequest& request) {
        asked = request;
        return std::optional(QJsonObject{{QStringLiteral("qualityPercent"), 65}, {QStringLiteral("format"), QStringLiteral("heic")}});
    });
    ASSERT_TRUE(asked && answers);
    EXPECT_EQ(asked->confirmText, u"Compress 3 images");
    EXPECT_EQ(asked->startingAnswers(), stored.toJson());

    CompressionSettings confirmed = stored;
    confirmed.qualityPercent = 65;
    confirmed.format = CompressionSettings::Format::heic;
    EXPECT_EQ(CompressionSettings::load(), confirmed);
    EXPECT_EQ(*answers, confirmed.toJson());
    EXPECT_TRUE(completeAnswers(*asked, confirmed.toJson()).isValid()) << "every value of the record fits its field";

    // Cancelling the next sheet keeps what the last one saved.
    EXPECT_FALSE(askBeforeRunning(*entry, threeFiles, [](const PromptRequest&) { return std::optional<QJsonObject>(); }));
    EXPECT_EQ(CompressionSettings::load(), confirmed);
}
