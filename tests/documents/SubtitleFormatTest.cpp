#include "documents/subtitles/SubtitleParser.h"
#include "documents/subtitles/SubtitleWriter.h"
#include "operations/OperationError.h"

#include <gtest/gtest.h>

using namespace wendrel;
using namespace wendrel::SubtitleOperations;

namespace {

QList<Cue> parse(const char* text) { return parseSubtitles(QString::fromUtf8(text)); }

std::optional<double> time(const char* text) { return parseSubtitleTime(QString::fromUtf8(text)); }

}  // namespace

TEST(SubtitleTime, ParsesHoursMinutesAndSecondsWithCommaOrDot)
{
    EXPECT_EQ(time("01:02:03,500"), 3723.5);
    EXPECT_EQ(time("01:02:03.500"), 3723.5);
    EXPECT_EQ(time("02:03.5"), 123.5);
    EXPECT_EQ(time("  00:00:01,000 "), 1.0);
    EXPECT_EQ(time("100:00:00,000"), 360000.0);
}

TEST(SubtitleTime, RefusesWhatIsNotATime)
{
    for (const char* text : {"5", "5.5", "", "1:2:3:4", "aa:bb", "00:-01:02", "00:01:1e2", "00:01:inf",
                             "00:01:02,5,0", "00 :01:02", "00:01:.", "nan:00"})
        EXPECT_EQ(time(text), std::nullopt) << text;
}

TEST(SubtitleTime, FormatsRoundingToTheNearestMillisecond)
{
    EXPECT_EQ(formatSubtitleTime(1.0005, u','), u"00:00:01,001");
    EXPECT_EQ(formatSubtitleTime(59.9996, u','), u"00:01:00,000");
    EXPECT_EQ(formatSubtitleTime(3723.5, u'.'), u"01:02:03.500");
    EXPECT_EQ(formatSubtitleTime(0, u','), u"00:00:00,000");
}

TEST(SubtitleTime, HoursGrowPastTwoDigits)
{
    EXPECT_EQ(formatSubtitleTime(100 * 3600 + 1.25, u','), u"100:00:01,250");
    EXPECT_EQ(formatSubtitleTime(12345 * 3600.0, u'.'), u"12345:00:00.000");
}

TEST(SubtitleTime, TimesTooLargeToCountAreAnErrorNotACrash)
{
    EXPECT_THROW(formatSubtitleTime(1e300, u','), OperationError);
    EXPECT_THROW(formatSubtitleTime(-1, u','), OperationError);
}

TEST(SubtitleParsing, VttBecomesNumberedSrtWithoutCueSettings)
{
    const QList<Cue> cues = parse(
        "WEBVTT\nKind: captions\n\nNOTE a comment\n\nintro\n00:00:01.000 --> 00:00:02.500 align:start position:10%\n"
        "Hello\n\n00:01.000 --> 00:03.000\nWorld\n");
    ASSERT_EQ(cues.size(), 2);
    EXPECT_EQ(cues[0], (Cue{1.0, 2.5, QStringLiteral("Hello")}));
    EXPECT_EQ(cues[1], (Cue{1.0, 3.0, QStringLiteral("World")}));
    EXPECT_EQ(writeSubtitles(cues, SubtitleFormat::srt),
              u"1\n00:00:01,000 --> 00:00:02,500\nHello\n\n2\n00:00:01,000 --> 00:00:03,000\nWorld\n\n");
}

TEST(SubtitleParsing, MultiLineTextKeepsItsLines)
{
    const QList<Cue> cues = parse("1\n00:00:06,197 --> 00:00:10,092\nOnly the early one.\novernight.\n\n");
    ASSERT_EQ(cues.size(), 1);
    EXPECT_EQ(cues[0].text, u"Only the early one.\novernight.");
}

TEST(SubtitleParsing, WindowsLineEndsAndByteOrderMarkChangeNothing)
{
    const char* unix = "1\n00:00:01,000 --> 00:00:02,000\nOne\ntwo\n\n2\n00:00:03,000 --> 00:00:04,000\nThree\n";
    const char* windows =
        "\xEF\xBB\xBF" "1\r\n00:00:01,000 --> 00:00:02,000\r\nOne\r\ntwo\r\n\r\n2\r\n00:00:03,000 --> 00:00:04,000\r\nThree\r\n";
    EXPECT_EQ(parse(windows), parse(unix));
    EXPECT_EQ(parse(unix).size(), 2);
}

TEST(SubtitleParsing, OnlyAnExactlyEmptyLineSeparatesBlocks)
{
    // The line of blanks keeps both time lines in one block: the second becomes text.
    const QList<Cue> cues = parse("00:00:01,000 --> 00:00:02,000\nOne\n   \n00:00:03,000 --> 00:00:04,000\nTwo\n");
    ASSERT_EQ(cues.size(), 1);
    EXPECT_EQ(cues[0].text, u"One\n   \n00:00:03,000 --> 00:00:04,000\nTwo");
}

TEST(SubtitleParsing, BrokenBlocksAreSkippedAndTheRestKept)
{
    const QList<Cue> cues = parse(
        "1\n00:00:01,000 --> \nno end\n\n"
        "2\nbad --> 00:00:02,000\nno start\n\n"
        "3\n00:00:01,000 --> 00:00:02,000 --> 00:00:03,000\ntwo arrows\n\n"
        "4\njust text\n\n"
        "5\n00:00:05,000 --> 00:00:06,000\nkept\n");
    ASSERT_EQ(cues.size(), 1);
    EXPECT_EQ(cues[0], (Cue{5.0, 6.0, QStringLiteral("kept")}));
}

TEST(SubtitleParsing, NothingUsableGivesNoCues)
{
    EXPECT_TRUE(parse("").isEmpty());
    EXPECT_TRUE(parse("WEBVTT\n\nNOTE only a note\n").isEmpty());
    EXPECT_TRUE(parse("hello world").isEmpty());
}

TEST(SubtitleParsing, CueWithoutTextIsKeptEmpty)
{
    const QList<Cue> cues = parse("00:00:01.000 --> 00:00:02.000\n");
    ASSERT_EQ(cues.size(), 1);
    EXPECT_TRUE(cues[0].text.isEmpty());
}

TEST(SubtitleWriting, VttHasHeaderAndNoNumbers)
{
    const QList<Cue> cues{{1.0, 2.0, QStringLiteral("A")}, {3.0, 4.25, QStringLiteral("B\nC")}};
    EXPECT_EQ(writeSubtitles(cues, SubtitleFormat::vtt),
              u"WEBVTT\n\n00:00:01.000 --> 00:00:02.000\nA\n\n00:00:03.000 --> 00:00:04.250\nB\nC\n\n");
}

TEST(SubtitleWriting, TextIsTheLinesAlone)
{
    const QList<Cue> cues{{1.0, 2.0, QStringLiteral("A")}, {3.0, 4.0, QStringLiteral("B\nC")}};
    EXPECT_EQ(writeSubtitles(cues, SubtitleFormat::txt), u"A\nB\nC\n");
}

class SubtitleRoundTrip : public ::testing::TestWithParam<SubtitleFormat> {};

TEST_P(SubtitleRoundTrip, KeepsCueTimesAndText)
{
    const QList<Cue> cues{{0.001, 1.5, QStringLiteral("Première ligne\n<i>deuxième</i>")},
                          {3599.999, 3600.0, QStringLiteral("→ 日本語")},
                          {360000.25, 360001.0, QStringLiteral("late")}};
    const QString written = writeSubtitles(cues, GetParam());
    const QList<Cue> parsed = parseSubtitles(written);
    ASSERT_EQ(parsed.size(), cues.size());
    for (qsizetype index = 0; index < cues.size(); ++index) {
        EXPECT_NEAR(parsed[index].start, cues[index].start, 1e-6);
        EXPECT_NEAR(parsed[index].end, cues[index].end, 1e-6);
        EXPECT_EQ(parsed[index].text, cues[index].text);
    }
    EXPECT_EQ(writeSubtitles(parsed, GetParam()), written);
}

INSTANTIATE_TEST_SUITE_P(SrtAndVtt, SubtitleRoundTrip,
                         ::testing::Values(SubtitleFormat::srt, SubtitleFormat::vtt),
                         [](const ::testing::TestParamInfo<SubtitleFormat>& parameter) {
                             return parameter.param == SubtitleFormat::srt ? "Srt" : "Vtt";
                         });
