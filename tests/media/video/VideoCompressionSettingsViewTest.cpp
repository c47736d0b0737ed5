#include "media/MediaOperations.h"
#include "media/video/compress/VideoCompressionSettingsView.h"
#include "operations/OperationCatalog.h"
#include "operations/prompt/PromptValues.h"
#include "operations/settings/SettingsStore.h"
#include "support/PromptSheet.h"

#include <QFile>

#include <gtest/gtest.h>

using namespace wendrel;
using namespace wendrel::media;
using Settings = VideoCompressionSettings;
using namespace Qt::StringLiterals;

namespace {

using test::shownFields;

class VideoCompressionSettingsViewTest : public ::testing::Test {
protected:
    void SetUp() override { QFile::remove(SettingsStore::filePath()); }
    void TearDown() override { QFile::remove(SettingsStore::filePath()); }

    PromptRequest view = videoCompressionSettingsView(Settings{}, 1);
};

TEST_F(VideoCompressionSettingsViewTest, EachModeShowsItsOwnTarget)
{
    const QString mode = QStringLiteral("Mode: By quality | To file size");
    const QString resolution = QStringLiteral("Resolution: Original | 2160p | 1080p | 720p | 480p | px high");
    const QString format =
        QStringLiteral("Format: H.264 | HEVC | H.264 plays everywhere. HEVC makes smaller files, but some older devices can't play them.");
    const struct {
        Settings settings;
        QStringList shown;
    } cases[] = {
        {{}, {mode, QStringLiteral("Quality: High | Balanced | Small"), resolution, format}},
        {{.mode = Settings::Mode::targetSize}, {mode, QStringLiteral("Size: MB or less"), resolution, format}},
    };
    for (const auto& testCase : cases)
        EXPECT_EQ(shownFields(view, testCase.settings.toJson()), testCase.shown) << testCase.shown[1].toStdString();
}

// The command line answers with the same fields, by value, title or alias.
TEST_F(VideoCompressionSettingsViewTest, CommandLineOptionsAnswerTheFields)
{
    using Options = QList<std::pair<QString, QString>>;
    const auto option = [](const char* name, const char* value) {
        return std::pair{QString::fromUtf8(name), QString::fromUtf8(value)};
    };
    const struct {
        Options options;
        Settings expected;
    } cases[] = {
        {{option("quality", "smallest")}, {.quality = QualityLevel::small}},
        {{option("target-mb", "8")}, {.mode = Settings::Mode::targetSize, .targetMB = 8}},
        {{option("mode", "size"), option("max-height", "720")}, {.mode = Settings::Mode::targetSize, .maxHeight = 720}},
        {{option("max-height", "4k"), option("codec", "x265")}, {.maxHeight = 2160, .codec = Settings::Codec::hevc}},
        {{option("max-height", "900"), option("codec", "H.264")}, {.maxHeight = 900}},
        {{option("max-height", "original"), option("codec", "hevc")}, {.codec = Settings::Codec::hevc}},
    };
    for (const auto& testCase : cases) {
        const CheckedAnswers answers = answersFromOptions(view, testCase.options);
        ASSERT_TRUE(answers.isValid()) << answers.problem.toStdString();
        EXPECT_EQ(Settings::fromJson(answers.answers), testCase.expected) << testCase.options.first().second.toStdString();
    }
    for (const Options& refused : {Options{option("codec", "av1")}, Options{option("max-height", "8")},
                                   Options{option("target-mb", "0")}, Options{option("quality", "best")}})
        EXPECT_FALSE(answersFromOptions(view, refused).isValid()) << refused.first().second.toStdString();
}

// The entry asks with this sheet, opening with the stored settings.
TEST_F(VideoCompressionSettingsViewTest, TheEntryAsksWithTheStoredSettings)
{
    OperationCatalog catalog;
    registerMediaOperations(catalog);
    const FileOperationPtr entry = catalog.find(QStringLiteral("video.compress"));
    ASSERT_TRUE(entry);
    const Settings stored{.mode = Settings::Mode::targetSize, .targetMB = 9.5, .codec = Settings::Codec::hevc};
    stored.save();
    const std::optional<PromptRequest> asked = entry->prompt({QStringLiteral("/a.mov"), QStringLiteral("/b.mp4")});
    ASSERT_TRUE(asked);
    EXPECT_EQ(asked->message, u"Compress 2 videos");
    EXPECT_EQ(asked->startingAnswers(), stored.toJson());
}

}  // namespace
