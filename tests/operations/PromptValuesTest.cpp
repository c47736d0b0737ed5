#include "operations/prompt/PromptValues.h"

#include <QJsonArray>
#include <QJsonDocument>

#include <gtest/gtest.h>

using namespace wendrel;

namespace {

using Kind = PromptField::Kind;

// A prompt of every kind, shaped like the ones the entries declare: a mode that decides which
// of two fields shows, a picker of sizes that also takes other numbers, a switch with a
// caption per state, and the text, password and folder questions.
PromptRequest everyKind()
{
    return {
        .title = QStringLiteral("Settings"),
        .fields = {
            {.kind = Kind::choice, .key = QStringLiteral("mode"), .label = QStringLiteral("Mode"),
             .option = QStringLiteral("mode"), .value = QStringLiteral("quality"),
             .choices = {{QStringLiteral("quality"), QStringLiteral("By quality"), {QStringLiteral("q")}},
                         {QStringLiteral("targetSize"), QStringLiteral("To file size"), {QStringLiteral("size")}}},
             .choiceStyle = PromptField::ChoiceStyle::segmented},
            {.kind = Kind::slider, .key = QStringLiteral("quality"), .label = QStringLiteral("Quality"),
             .option = QStringLiteral("quality"), .value = 75, .minimum = 1, .maximum = 100,
             .valueFormat = QStringLiteral("Quality %1%"),
             .shownWhen = PromptCondition{QStringLiteral("mode"), {QStringLiteral("quality")}}},
            {.kind = Kind::number, .key = QStringLiteral("targetMB"), .label = QStringLiteral("Size"),
             .option = QStringLiteral("target-mb"), .value = 2.0, .minimum = 0.01, .maximum = 10'000,
             .decimals = 2, .unit = QStringLiteral("MB or less"),
             .shownWhen = PromptCondition{QStringLiteral("mode"), {QStringLiteral("targetSize")}}},
            {.kind = Kind::choice, .key = QStringLiteral("side"), .label = QStringLiteral("Longest side"),
             .option = QStringLiteral("side"), .value = 0, .minimum = 1, .maximum = 100'000,
             .unit = QStringLiteral("px"),
             .choices = {{0, QStringLiteral("Keep original"), {QStringLiteral("keep")}}, {1920, QStringLiteral("1920 px")}},
             .acceptsOtherNumbers = true},
            {.kind = Kind::toggle, .key = QStringLiteral("rasterize"), .label = QStringLiteral("Save pages as images"),
             .option = QStringLiteral("pages-as-images"), .value = false,
             .caption = QStringLiteral("Text stays selectable."),
             .captionWhenOn = QStringLiteral("Text will no longer be selectable.")},
            {.kind = Kind::text, .key = QStringLiteral("text"), .label = QStringLiteral("Watermark text"),
             .option = QStringLiteral("text"), .value = QStringLiteral("CONFIDENTIAL"), .required = true,
             .shownWhen = PromptCondition{QStringLiteral("rasterize"), {true}}},
            {.kind = Kind::password, .key = QStringLiteral("password"), .label = QStringLiteral("Password"),
             .option = QStringLiteral("password"), .value = QStringLiteral("hunter2"), .required = true},
            {.kind = Kind::folder, .key = QStringLiteral("folder"), .label = QStringLiteral("Copy to"),
             .option = QStringLiteral("folder"), .value = QString(), .required = true},
        },
        .confirmText = QStringLiteral("Go"),
        .cancelText = QStringLiteral("Cancel"),
    };
}

class PromptValuesTest : public ::testing::Test {
protected:
    const PromptField& field(const char* key) const { return *request.field(QString::fromUtf8(key)); }

    // What reading `text` for the field gives; null stands for "refused".
    QJsonValue read(const char* key, const QString& text) const
    {
        return readFieldValue(field(key), text).value_or(QJsonValue(QJsonValue::Null));
    }

    CheckedAnswers fromOptions(const QList<std::pair<QString, QString>>& options) const
    {
        return answersFromOptions(request, options);
    }

    const PromptRequest request = everyKind();
    const QJsonValue refused{QJsonValue::Null};
};

}  // namespace

// What typed text each kind of field takes, and as what; null stands for "refused".
TEST_F(PromptValuesTest, TypedTextIsReadByTheFieldsKindAndLimits)
{
    const QJsonValue targetSize(QStringLiteral("targetSize"));
    const struct {
        const char* key;
        const char* text;
        QJsonValue expected;
    } rows[] = {
        // Choices: their value, title or alias, spelled any way; menu numbers are the terminal's.
        {"mode", "targetSize", targetSize}, {"mode", "TARGETSIZE", targetSize}, {"mode", "target-size", targetSize},
        {"mode", "target_size", targetSize}, {"mode", "To file size", targetSize}, {"mode", "size", targetSize},
        {"mode", "q", QStringLiteral("quality")}, {"mode", "fast", refused}, {"mode", "1", refused}, {"mode", "", refused},
        // A numeric choice that takes other whole numbers in range.
        {"side", "1920", 1920}, {"side", "1920.0", 1920}, {"side", "keep", 0}, {"side", "1600", 1600},
        {"side", "1600.5", refused}, {"side", "-5", refused}, {"side", "100001", refused},
        // Numbers: finite and within their limits.
        {"targetMB", "0.5", 0.5}, {"targetMB", " 2 ", 2}, {"targetMB", "10000", 10'000}, {"targetMB", "0.01", 0.01},
        {"targetMB", "abc", refused}, {"targetMB", "", refused}, {"targetMB", "0.5MB", refused},
        {"targetMB", "0,5", refused}, {"targetMB", "nan", refused}, {"targetMB", "inf", refused},
        {"targetMB", "1e400", refused}, {"targetMB", "0.001", refused}, {"targetMB", "10000.5", refused},
        {"targetMB", "-1", refused},
        // Sliders: only values on their steps.
        {"quality", "60", 60}, {"quality", "100", 100}, {"quality", "60.5", refused}, {"quality", "0", refused},
        {"quality", "101", refused}, {"quality", "abc", refused},
        // Toggles: the usual yes and no words.
        {"rasterize", "yes", true}, {"rasterize", "Y", true}, {"rasterize", "on", true}, {"rasterize", "TRUE", true},
        {"rasterize", "1", true}, {"rasterize", "no", false}, {"rasterize", "n", false}, {"rasterize", "Off", false},
        {"rasterize", "false", false}, {"rasterize", "0", false}, {"rasterize", "maybe", refused},
        // Required text refuses blanks; passwords keep their spaces; folders are absolute paths.
        {"text", "DRAFT", QStringLiteral("DRAFT")}, {"text", "   ", refused},
        {"password", " two words ", QStringLiteral(" two words ")}, {"password", "", refused},
        {"folder", "/home/ann/Pictures", QStringLiteral("/home/ann/Pictures")}, {"folder", "Pictures", refused},
        {"folder", "", refused},
    };
    for (const auto& row : rows)
        EXPECT_EQ(read(row.key, QString::fromUtf8(row.text)), row.expected) << row.key << " \"" << row.text << '"';
}

TEST_F(PromptValuesTest, StepsClosedChoicesAndOptionalFieldsChangeWhatIsTaken)
{
    PromptField closed = field("side");
    closed.acceptsOtherNumbers = false;
    PromptField byFives = field("quality");
    byFives.minimum = 10;
    byFives.step = 5;
    PromptField optional = field("password");
    optional.required = false;
    const struct {
        const PromptField& field;
        const char* text;
        std::optional<QJsonValue> expected;
    } rows[] = {{closed, "1600", std::nullopt}, {closed, "1920", 1920},       {byFives, "25", 25},
                {byFives, "27", std::nullopt},  {optional, "", QString()}};
    for (const auto& row : rows)
        EXPECT_EQ(readFieldValue(row.field, QString::fromUtf8(row.text)), row.expected) << row.text;
}

TEST_F(PromptValuesTest, JsonValuesAreCheckedByTypeAsWellAsRange)
{
    EXPECT_TRUE(checkFieldValue(field("quality"), 60));
    EXPECT_FALSE(checkFieldValue(field("quality"), QStringLiteral("60")));
    EXPECT_FALSE(checkFieldValue(field("rasterize"), 1));
    EXPECT_FALSE(checkFieldValue(field("mode"), QStringLiteral("To file size")));  // titles are for people
    EXPECT_FALSE(checkFieldValue(field("text"), QJsonValue()));
}

TEST_F(PromptValuesTest, AcceptedValuesSayWhatEachFieldTakes)
{
    EXPECT_EQ(acceptedValues(field("mode")), u"quality or targetSize");
    EXPECT_EQ(acceptedValues(field("quality")), u"a whole number from 1 to 100");
    EXPECT_EQ(acceptedValues(field("targetMB")), u"a number from 0.01 to 10000");
    EXPECT_EQ(acceptedValues(field("side")), u"0, 1920 or another whole number from 1 to 100000");
    EXPECT_EQ(acceptedValues(field("rasterize")), u"yes or no");
}

TEST_F(PromptValuesTest, FieldsShowOnlyWhileTheWholeChainOfConditionsHolds)
{
    QJsonObject answers = request.startingAnswers();
    EXPECT_TRUE(request.isShown(field("quality"), answers));
    EXPECT_FALSE(request.isShown(field("targetMB"), answers));
    EXPECT_FALSE(request.isShown(field("text"), answers));

    answers.insert(QStringLiteral("mode"), QStringLiteral("targetSize"));
    answers.insert(QStringLiteral("rasterize"), true);
    EXPECT_FALSE(request.isShown(field("quality"), answers));
    EXPECT_TRUE(request.isShown(field("targetMB"), answers));
    EXPECT_TRUE(request.isShown(field("text"), answers));

    // The text hangs on the switch; hide the switch and the text goes with it.
    PromptRequest chained = request;
    chained.fields[4].shownWhen = PromptCondition{QStringLiteral("mode"), {QStringLiteral("quality")}};
    EXPECT_FALSE(chained.isShown(*chained.field(QStringLiteral("text")), answers));
}

TEST_F(PromptValuesTest, CompletedAnswersStartFromTheStartingValuesAndCheckWhatWasGiven)
{
    const CheckedAnswers answers = completeAnswers(request, {{QStringLiteral("targetMB"), 0.5}});
    ASSERT_TRUE(answers.isValid()) << answers.problem.toStdString();
    QJsonObject expected = request.startingAnswers();
    expected.insert(QStringLiteral("targetMB"), 0.5);
    EXPECT_EQ(answers.answers, expected);

    EXPECT_EQ(completeAnswers(request, {{QStringLiteral("targetMB"), QStringLiteral("big")}}).problem,
              u"Size: expected a number from 0.01 to 10000.");
    EXPECT_EQ(completeAnswers(request, {{QStringLiteral("colour"), 1}}).problem, u"There is no field “colour”.");
    EXPECT_FALSE(completeAnswers(request, {{QStringLiteral("mode"), QStringLiteral("fast")}}).isValid());
}

// Options go over the starting values, the last of a repeated one counts, and an option for a
// hidden field selects what shows it, up a chain of conditions.
TEST_F(PromptValuesTest, OptionsGoOverTheStartingValues)
{
    using Options = QList<std::pair<QString, QString>>;
    const auto option = [](const char* name, const char* value) {
        return std::pair{QString::fromUtf8(name), QString::fromUtf8(value)};
    };
    const struct {
        Options options;
        QJsonObject changed;
    } rows[] = {
        {{option("side", "1920"), option("quality", "60")}, {{QStringLiteral("side"), 1920}, {QStringLiteral("quality"), 60}}},
        {{option("quality", "10"), option("quality", "90")}, {{QStringLiteral("quality"), 90}}},
        {{option("target-mb", "0.5")}, {{QStringLiteral("mode"), QStringLiteral("targetSize")}, {QStringLiteral("targetMB"), 0.5}}},
        {{option("text", "DRAFT")}, {{QStringLiteral("rasterize"), true}, {QStringLiteral("text"), QStringLiteral("DRAFT")}}},
    };
    for (const auto& row : rows) {
        const CheckedAnswers answers = fromOptions(row.options);
        ASSERT_TRUE(answers.isValid()) << answers.problem.toStdString();
        QJsonObject expected = request.startingAnswers();
        for (auto it = row.changed.begin(); it != row.changed.end(); ++it)
            expected.insert(it.key(), it.value());
        EXPECT_EQ(answers.answers, expected) << row.options.first().first.toStdString();
    }

    // Contradictions name both options; bad values name the option and what it takes.
    const struct {
        Options options;
        const char* problem;
    } refused[] = {
        {{option("mode", "quality"), option("target-mb", "0.5")},
         "--target-mb applies only with --mode targetSize, not with --mode quality."},
        {{option("quality", "60"), option("target-mb", "0.5")},
         "--quality and --target-mb can't be used together: one needs --mode quality, the other --mode targetSize."},
        {{option("pages-as-images", "no"), option("text", "DRAFT")},
         "--text applies only with --pages-as-images on, not with --pages-as-images off."},
        {{option("quality", "abc")}, "Invalid value “abc” for --quality: expected a whole number from 1 to 100."},
        {{option("mode", "fast")}, "Invalid value “fast” for --mode: expected quality or targetSize."},
    };
    for (const auto& row : refused)
        EXPECT_EQ(fromOptions(row.options).problem, QString::fromUtf8(row.problem));
    EXPECT_TRUE(fromOptions({option("colour", "red")})
                    .problem.startsWith(u"--colour is not one of the settings here; they are --mode, --quality,"));
}

TEST_F(PromptValuesTest, JsonDescriptionListsFieldsButNeverAPassword)
{
    const QJsonObject json = toJson(request);
    const QJsonArray fields = json.value(QStringLiteral("fields")).toArray();
    ASSERT_EQ(fields.size(), request.fields.size());
    const QJsonObject size = fields[2].toObject();
    EXPECT_EQ(size.value(QStringLiteral("option")).toString(), u"--target-mb");
    EXPECT_EQ(size.value(QStringLiteral("unit")).toString(), u"MB or less");
    EXPECT_EQ(size.value(QStringLiteral("shownWhen")).toObject().value(QStringLiteral("values")).toArray().first(),
              QJsonValue(QStringLiteral("targetSize")));
    EXPECT_FALSE(fields[6].toObject().contains(QStringLiteral("value")));
    EXPECT_FALSE(QJsonDocument(json).toJson().contains("hunter2"));
}

TEST(PromptTexts, SliderLabelsAndCaptionsFollowTheValue)
{
    const PromptRequest request = everyKind();
    EXPECT_EQ(sliderLabel(*request.field(QStringLiteral("quality")), 59.6), u"Quality 60%");
    const PromptField& rasterize = *request.field(QStringLiteral("rasterize"));
    EXPECT_EQ(captionFor(rasterize, false), u"Text stays selectable.");
    EXPECT_EQ(captionFor(rasterize, true), u"Text will no longer be selectable.");
    EXPECT_EQ(choiceTitle(*request.field(QStringLiteral("side")), 1600), u"1600 px");
    EXPECT_EQ(choiceTitle(*request.field(QStringLiteral("side")), 0), u"Keep original");
    EXPECT_EQ(displayNumber(100'000), u"100000");
    EXPECT_EQ(displayNumber(0.05), u"0.05");
}
