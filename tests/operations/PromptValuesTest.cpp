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

TEST_F(PromptValuesTest, ChoicesAcceptTheirValueTitleOrAliasSpelledAnyWay)
{
    for (const char* spelling : {"targetSize", "TARGETSIZE", "target-size", "target_size", "To file size", "size"})
        EXPECT_EQ(read("mode", QString::fromUtf8(spelling)), QJsonValue(QStringLiteral("targetSize"))) << spelling;
    EXPECT_EQ(read("mode", QStringLiteral("q")), QJsonValue(QStringLiteral("quality")));
    EXPECT_EQ(read("mode", QStringLiteral("fast")), refused);
    EXPECT_EQ(read("mode", QStringLiteral("1")), refused);  // menu numbers are the terminal's business
    EXPECT_EQ(read("mode", QString()), refused);
}

TEST_F(PromptValuesTest, NumericChoicesTakeOtherWholeNumbersInRangeOnlyWhenAllowed)
{
    EXPECT_EQ(read("side", QStringLiteral("1920")), QJsonValue(1920));
    EXPECT_EQ(read("side", QStringLiteral("1920.0")), QJsonValue(1920));
    EXPECT_EQ(read("side", QStringLiteral("keep")), QJsonValue(0));
    EXPECT_EQ(read("side", QStringLiteral("1600")), QJsonValue(1600));
    EXPECT_EQ(read("side", QStringLiteral("1600.5")), refused);
    EXPECT_EQ(read("side", QStringLiteral("-5")), refused);
    EXPECT_EQ(read("side", QStringLiteral("100001")), refused);

    PromptField closed = field("side");
    closed.acceptsOtherNumbers = false;
    EXPECT_FALSE(readFieldValue(closed, QStringLiteral("1600")));
    EXPECT_EQ(readFieldValue(closed, QStringLiteral("1920")), QJsonValue(1920));
}

TEST_F(PromptValuesTest, NumbersMustBeFiniteAndWithinTheirLimits)
{
    EXPECT_EQ(read("targetMB", QStringLiteral("0.5")), QJsonValue(0.5));
    EXPECT_EQ(read("targetMB", QStringLiteral(" 2 ")), QJsonValue(2));
    EXPECT_EQ(read("targetMB", QStringLiteral("10000")), QJsonValue(10'000));
    EXPECT_EQ(read("targetMB", QStringLiteral("0.01")), QJsonValue(0.01));
    for (const char* text : {"abc", "", "0.5MB", "0,5", "nan", "inf", "1e400", "0.001", "10000.5", "-1"})
        EXPECT_EQ(read("targetMB", QString::fromUtf8(text)), refused) << text;
}

TEST_F(PromptValuesTest, SlidersTakeOnlyValuesOnTheirSteps)
{
    EXPECT_EQ(read("quality", QStringLiteral("60")), QJsonValue(60));
    EXPECT_EQ(read("quality", QStringLiteral("100")), QJsonValue(100));
    for (const char* text : {"60.5", "0", "101", "abc"})
        EXPECT_EQ(read("quality", QString::fromUtf8(text)), refused) << text;

    PromptField byFives = field("quality");
    byFives.minimum = 10;
    byFives.step = 5;
    EXPECT_TRUE(readFieldValue(byFives, QStringLiteral("25")));
    EXPECT_FALSE(readFieldValue(byFives, QStringLiteral("27")));
}

TEST_F(PromptValuesTest, TogglesReadTheUsualYesAndNoWords)
{
    for (const char* yes : {"yes", "Y", "on", "TRUE", "1"})
        EXPECT_EQ(read("rasterize", QString::fromUtf8(yes)), QJsonValue(true)) << yes;
    for (const char* no : {"no", "n", "Off", "false", "0"})
        EXPECT_EQ(read("rasterize", QString::fromUtf8(no)), QJsonValue(false)) << no;
    EXPECT_EQ(read("rasterize", QStringLiteral("maybe")), refused);
}

TEST_F(PromptValuesTest, RequiredTextRefusesBlanksWhilePasswordsKeepTheirSpaces)
{
    EXPECT_EQ(read("text", QStringLiteral("DRAFT")), QJsonValue(QStringLiteral("DRAFT")));
    EXPECT_EQ(read("text", QStringLiteral("   ")), refused);
    EXPECT_EQ(read("password", QStringLiteral(" two words ")), QJsonValue(QStringLiteral(" two words ")));
    EXPECT_EQ(read("password", QString()), refused);

    PromptField optional = field("password");
    optional.required = false;
    EXPECT_EQ(readFieldValue(optional, QString()), QJsonValue(QString()));
}

TEST_F(PromptValuesTest, FoldersMustBeAbsolutePaths)
{
    EXPECT_EQ(read("folder", QStringLiteral("/home/ann/Pictures")), QJsonValue(QStringLiteral("/home/ann/Pictures")));
    EXPECT_EQ(read("folder", QStringLiteral("Pictures")), refused);
    EXPECT_EQ(read("folder", QString()), refused);
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

TEST_F(PromptValuesTest, OptionsGoOverTheStartingValues)
{
    const CheckedAnswers answers = fromOptions({{QStringLiteral("side"), QStringLiteral("1920")},
                                                {QStringLiteral("quality"), QStringLiteral("60")}});
    ASSERT_TRUE(answers.isValid()) << answers.problem.toStdString();
    QJsonObject expected = request.startingAnswers();
    expected.insert(QStringLiteral("side"), 1920);
    expected.insert(QStringLiteral("quality"), 60);
    EXPECT_EQ(answers.answers, expected);
}

TEST_F(PromptValuesTest, AnOptionForAHiddenFieldSelectsTheModeThatShowsIt)
{
    const CheckedAnswers answers = fromOptions({{QStringLiteral("target-mb"), QStringLiteral("0.5")}});
    ASSERT_TRUE(answers.isValid()) << answers.problem.toStdString();
    EXPECT_EQ(answers.answers.value(QStringLiteral("mode")), QJsonValue(QStringLiteral("targetSize")));
    EXPECT_EQ(answers.answers.value(QStringLiteral("targetMB")), QJsonValue(0.5));

    // Up a chain: the text needs the switch on.
    const CheckedAnswers text = fromOptions({{QStringLiteral("text"), QStringLiteral("DRAFT")}});
    ASSERT_TRUE(text.isValid()) << text.problem.toStdString();
    EXPECT_EQ(text.answers.value(QStringLiteral("rasterize")), QJsonValue(true));
}

TEST_F(PromptValuesTest, ContradictoryOptionsAreRefusedWithBothNamed)
{
    EXPECT_EQ(fromOptions({{QStringLiteral("mode"), QStringLiteral("quality")},
                           {QStringLiteral("target-mb"), QStringLiteral("0.5")}})
                  .problem,
              u"--target-mb applies only with --mode targetSize, not with --mode quality.");
    EXPECT_EQ(fromOptions({{QStringLiteral("quality"), QStringLiteral("60")},
                           {QStringLiteral("target-mb"), QStringLiteral("0.5")}})
                  .problem,
              u"--quality and --target-mb can't be used together: one needs --mode quality, the other --mode targetSize.");
    EXPECT_EQ(fromOptions({{QStringLiteral("pages-as-images"), QStringLiteral("no")},
                           {QStringLiteral("text"), QStringLiteral("DRAFT")}})
                  .problem,
              u"--text applies only with --pages-as-images on, not with --pages-as-images off.");
}

TEST_F(PromptValuesTest, BadOptionsNameTheOptionAndWhatItTakes)
{
    EXPECT_EQ(fromOptions({{QStringLiteral("quality"), QStringLiteral("abc")}}).problem,
              u"Invalid value “abc” for --quality: expected a whole number from 1 to 100.");
    EXPECT_EQ(fromOptions({{QStringLiteral("mode"), QStringLiteral("fast")}}).problem,
              u"Invalid value “fast” for --mode: expected quality or targetSize.");
    EXPECT_TRUE(fromOptions({{QStringLiteral("colour"), QStringLiteral("red")}})
                    .problem.startsWith(u"--colour is not one of the settings here; they are --mode, --quality,"));
}

TEST_F(PromptValuesTest, TheLastOfARepeatedOptionCounts)
{
    const CheckedAnswers answers = fromOptions({{QStringLiteral("quality"), QStringLiteral("10")},
                                                {QStringLiteral("quality"), QStringLiteral("90")}});
    EXPECT_EQ(answers.answers.value(QStringLiteral("quality")), QJsonValue(90));
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
