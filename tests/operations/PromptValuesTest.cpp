#include "operations/prompt/PromptValues.h"

#include <QJsonArray>
#include <QJsonDocument>

#include <gtest/gtest.h>

using namespace wendrel;
using namespace Qt::StringLiterals;

namespace {

using Kind = PromptField::Kind;

// A prompt of every kind, shaped like the ones the entries declare: a mode that decides which
// of two fields shows, a picker of sizes that also takes other numbers, a switch with a
// caption per state, and the text, password and folder questions.
PromptRequest everyKind()
{
    const PromptCondition whenQuality{u"mode"_s, {u"quality"_s}};
    return {
        .title = u"Settings"_s,
        .fields = {
            {.kind = Kind::choice, .key = u"mode"_s, .label = u"Mode"_s, .option = u"mode"_s, .value = u"quality"_s,
             .choices = {{u"quality"_s, u"By quality"_s, {u"q"_s}}, {u"targetSize"_s, u"To file size"_s, {u"size"_s}}},
             .choiceStyle = PromptField::ChoiceStyle::segmented},
            {.kind = Kind::slider, .key = u"quality"_s, .label = u"Quality"_s, .option = u"quality"_s, .value = 75,
             .minimum = 1, .maximum = 100, .valueFormat = u"Quality %1%"_s, .shownWhen = whenQuality},
            {.kind = Kind::number, .key = u"targetMB"_s, .label = u"Size"_s, .option = u"target-mb"_s, .value = 2.0,
             .minimum = 0.01, .maximum = 10'000, .decimals = 2, .unit = u"MB or less"_s,
             .shownWhen = PromptCondition{u"mode"_s, {u"targetSize"_s}}},
            {.kind = Kind::choice, .key = u"side"_s, .label = u"Longest side"_s, .option = u"side"_s, .value = 0,
             .minimum = 1, .maximum = 100'000, .unit = u"px"_s,
             .choices = {{0, u"Keep original"_s, {u"keep"_s}}, {1920, u"1920 px"_s}}, .acceptsOtherNumbers = true},
            {.kind = Kind::toggle, .key = u"rasterize"_s, .label = u"Save pages as images"_s,
             .option = u"pages-as-images"_s, .value = false, .caption = u"Text stays selectable."_s,
             .captionWhenOn = u"Text will no longer be selectable."_s},
            {.kind = Kind::text, .key = u"text"_s, .label = u"Watermark text"_s, .option = u"text"_s,
             .value = u"CONFIDENTIAL"_s, .required = true, .shownWhen = PromptCondition{u"rasterize"_s, {true}}},
            {.kind = Kind::password, .key = u"password"_s, .label = u"Password"_s, .option = u"password"_s,
             .value = u"hunter2"_s, .required = true},
            {.kind = Kind::folder, .key = u"folder"_s, .label = u"Copy to"_s, .option = u"folder"_s, .value = QString(),
             .required = true},
        },
        .confirmText = u"Go"_s,
        .cancelText = u"Cancel"_s,
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
    const QJsonValue targetSize(u"targetSize"_s);
    const struct {
        const char* key;
        const char* text;
        QJsonValue expected;
    } rows[] = {
        // Choices: their value, title or alias, spelled any way; menu numbers are the terminal's.
        {"mode", "targetSize", targetSize}, {"mode", "TARGETSIZE", targetSize}, {"mode", "target-size", targetSize},
        {"mode", "target_size", targetSize}, {"mode", "To file size", targetSize}, {"mode", "size", targetSize},
        {"mode", "q", u"quality"_s}, {"mode", "fast", refused}, {"mode", "1", refused}, {"mode", "", refused},
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
        {"text", "DRAFT", u"DRAFT"_s}, {"text", "   ", refused},
        {"password", " two words ", u" two words "_s}, {"password", "", refused},
        {"folder", "/home/ann/Pictures", u"/home/ann/Pictures"_s}, {"folder", "Pictures", refused},
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
    EXPECT_FALSE(checkFieldValue(field("quality"), u"60"_s));
    EXPECT_FALSE(checkFieldValue(field("rasterize"), 1));
    EXPECT_FALSE(checkFieldValue(field("mode"), u"To file size"_s));  // titles are for people
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

    answers.insert(u"mode"_s, u"targetSize"_s);
    answers.insert(u"rasterize"_s, true);
    EXPECT_FALSE(request.isShown(field("quality"), answers));
    EXPECT_TRUE(request.isShown(field("targetMB"), answers));
    EXPECT_TRUE(request.isShown(field("text"), answers));

    // The text hangs on the switch; hide the switch and the text goes with it.
    PromptRequest chained = request;
    chained.fields[4].shownWhen = PromptCondition{u"mode"_s, {u"quality"_s}};
    EXPECT_FALSE(chained.isShown(*chained.field(u"text"_s), answers));
}

TEST_F(PromptValuesTest, CompletedAnswersStartFromTheStartingValuesAndCheckWhatWasGiven)
{
    const CheckedAnswers answers = completeAnswers(request, {{u"targetMB"_s, 0.5}});
    ASSERT_TRUE(answers.isValid()) << answers.problem.toStdString();
    QJsonObject expected = request.startingAnswers();
    expected.insert(u"targetMB"_s, 0.5);
    EXPECT_EQ(answers.answers, expected);

    EXPECT_EQ(completeAnswers(request, {{u"targetMB"_s, u"big"_s}}).problem, u"Size: expected a number from 0.01 to 10000.");
    EXPECT_EQ(completeAnswers(request, {{u"colour"_s, 1}}).problem, u"There is no field “colour”.");
    EXPECT_FALSE(completeAnswers(request, {{u"mode"_s, u"fast"_s}}).isValid());
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
        {{option("side", "1920"), option("quality", "60")}, {{u"side"_s, 1920}, {u"quality"_s, 60}}},
        {{option("quality", "10"), option("quality", "90")}, {{u"quality"_s, 90}}},
        {{option("target-mb", "0.5")}, {{u"mode"_s, u"targetSize"_s}, {u"targetMB"_s, 0.5}}},
        {{option("text", "DRAFT")}, {{u"rasterize"_s, true}, {u"text"_s, u"DRAFT"_s}}},
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
    const QJsonArray fields = json.value(u"fields"_s).toArray();
    ASSERT_EQ(fields.size(), request.fields.size());
    const QJsonObject size = fields[2].toObject();
    EXPECT_EQ(size.value(u"option"_s).toString(), u"--target-mb");
    EXPECT_EQ(size.value(u"unit"_s).toString(), u"MB or less");
    EXPECT_EQ(size.value(u"shownWhen"_s).toObject().value(u"values"_s).toArray().first(), QJsonValue(u"targetSize"_s));
    EXPECT_FALSE(fields[6].toObject().contains(u"value"_s));
    EXPECT_FALSE(QJsonDocument(json).toJson().contains("hunter2"));
}

TEST(PromptTexts, SliderLabelsAndCaptionsFollowTheValue)
{
    const PromptRequest request = everyKind();
    EXPECT_EQ(sliderLabel(*request.field(u"quality"_s), 59.6), u"Quality 60%");
    const PromptField& rasterize = *request.field(u"rasterize"_s);
    EXPECT_EQ(captionFor(rasterize, false), u"Text stays selectable.");
    EXPECT_EQ(captionFor(rasterize, true), u"Text will no longer be selectable.");
    EXPECT_EQ(choiceTitle(*request.field(u"side"_s), 1600), u"1600 px");
    EXPECT_EQ(choiceTitle(*request.field(u"side"_s), 0), u"Keep original");
    EXPECT_EQ(displayNumber(100'000), u"100000");
    EXPECT_EQ(displayNumber(0.05), u"0.05");
}
