#include "documents/subtitles/SubtitleParser.h"
#include "documents/subtitles/SubtitleWriter.h"
#include "operations/OperationError.h"

#include <gtest/gtest.h>

using namespace wendrel;
using namespace wendrel::SubtitleOperations;
using namespace Qt::StringLiterals;

TEST(SubtitleTime, ReadsHoursMinutesAndSecondsAndRefusesWhatIsNotATime)
{
    const struct {
        const char* text;
        std::optional<double> seconds;
    } rows[] = {
        {"01:02:03,500", 3723.5}, {"01:02:03.500", 3723.5}, {"02:03.5", 123.5}, {"  00:00:01,000 ", 1.0},
        {"100:00:00,000", 360000.0},
        {"5", std::nullopt}, {"5.5", std::nullopt}, {"", std::nullopt}, {"1:2:3:4", std::nullopt},
        {"aa:bb", std::nullopt}, {"00:-01:02", std::nullopt}, {"00:01:1e2", std::nullopt},
        {"00:01:inf", std::nullopt}, {"00:01:02,5,0", std::nullopt}, {"00 :01:02", std::nullopt},
        {"00:01:.", std::nullopt}, {"nan:00", std::nullopt},
    };
    for (const auto& row : rows)
        EXPECT_EQ(parseSubtitleTime(QString::fromUtf8(row.text)), row.seconds) << '"' << row.text << '"';
}

// Rounded to the nearest millisecond; hours grow past two digits; a time too large to count, or
// negative, is an error, not a crash.
TEST(SubtitleTime, WritesRoundedToTheMillisecond)
{
    const struct {
        double seconds;
        char16_t separator;
        QString text;
    } rows[] = {
        {1.0005, u',', u"00:00:01,001"_s},        {59.9996, u',', u"00:01:00,000"_s},
        {3723.5, u'.', u"01:02:03.500"_s},        {0, u',', u"00:00:00,000"_s},
        {100 * 3600 + 1.25, u',', u"100:00:01,250"_s}, {12345 * 3600.0, u'.', u"12345:00:00.000"_s},
    };
    for (const auto& row : rows)
        EXPECT_EQ(formatSubtitleTime(row.seconds, row.separator), row.text) << row.seconds;
    EXPECT_THROW(formatSubtitleTime(1e300, u','), OperationError);
    EXPECT_THROW(formatSubtitleTime(-1, u','), OperationError);
}

TEST(SubtitleParsing, CuesAreReadFromEitherFormatAndBrokenBlocksSkipped)
{
    const char* unix = "1\n00:00:01,000 --> 00:00:02,000\nOne\ntwo\n\n2\n00:00:03,000 --> 00:00:04,000\nThree\n";
    const struct {
        const char* rule;
        const char* text;
        QList<Cue> cues;
    } rows[] = {
        {"VTT without its header, notes, identifiers and cue settings",
         "WEBVTT\nKind: captions\n\nNOTE a comment\n\nintro\n00:00:01.000 --> 00:00:02.500 align:start position:10%\n"
         "Hello\n\n00:01.000 --> 00:03.000\nWorld\n",
         {{1.0, 2.5, u"Hello"_s}, {1.0, 3.0, u"World"_s}}},
        {"multi-line text keeps its lines", unix, {{1, 2, u"One\ntwo"_s}, {3, 4, u"Three"_s}}},
        {"Windows line ends and a byte order mark change nothing",
         "\xEF\xBB\xBF" "1\r\n00:00:01,000 --> 00:00:02,000\r\nOne\r\ntwo\r\n\r\n2\r\n00:00:03,000 --> 00:00:04,000\r\nThree\r\n",
         {{1, 2, u"One\ntwo"_s}, {3, 4, u"Three"_s}}},
        // The line of blanks keeps both time lines in one block: the second becomes text.
        {"only an exactly empty line separates blocks",
         "00:00:01,000 --> 00:00:02,000\nOne\n   \n00:00:03,000 --> 00:00:04,000\nTwo\n",
         {{1, 2, u"One\n   \n00:00:03,000 --> 00:00:04,000\nTwo"_s}}},
        {"broken blocks are skipped and the rest kept",
         "1\n00:00:01,000 --> \nno end\n\n2\nbad --> 00:00:02,000\nno start\n\n"
         "3\n00:00:01,000 --> 00:00:02,000 --> 00:00:03,000\ntwo arrows\n\n4\njust text\n\n"
         "5\n00:00:05,000 --> 00:00:06,000\nkept\n",
         {{5.0, 6.0, u"kept"_s}}},
        {"a cue without text is kept, empty", "00:00:01.000 --> 00:00:02.000\n", {{1, 2, QString()}}},
        {"nothing at all", "", {}}, {"only a note", "WEBVTT\n\nNOTE only a note\n", {}},
        {"no time line", "hello world", {}},
    };
    for (const auto& row : rows)
        EXPECT_EQ(parseSubtitles(QString::fromUtf8(row.text)), row.cues) << row.rule;
}

TEST(SubtitleWriting, SrtIsNumberedVttHasAHeaderTextIsTheLinesAlone)
{
    const QList<Cue> cues{{1.0, 2.5, u"A"_s}, {3.0, 4.25, u"B\nC"_s}};
    EXPECT_EQ(writeSubtitles(cues, SubtitleFormat::srt),
              u"1\n00:00:01,000 --> 00:00:02,500\nA\n\n2\n00:00:03,000 --> 00:00:04,250\nB\nC\n\n");
    EXPECT_EQ(writeSubtitles(cues, SubtitleFormat::vtt),
              u"WEBVTT\n\n00:00:01.000 --> 00:00:02.500\nA\n\n00:00:03.000 --> 00:00:04.250\nB\nC\n\n");
    EXPECT_EQ(writeSubtitles(cues, SubtitleFormat::txt), u"A\nB\nC\n");
}

TEST(SubtitleRoundTrip, SrtAndVttKeepCueTimesAndText)
{
    const QList<Cue> cues{{0.001, 1.5, u"Première ligne\n<i>deuxième</i>"_s},
                          {3599.999, 3600.0, u"→ 日本語"_s},
                          {360000.25, 360001.0, u"late"_s}};
    for (const SubtitleFormat format : {SubtitleFormat::srt, SubtitleFormat::vtt}) {
        const QString written = writeSubtitles(cues, format);
        const QList<Cue> parsed = parseSubtitles(written);
        ASSERT_EQ(parsed.size(), cues.size()) << written.toStdString();
        for (qsizetype index = 0; index < cues.size(); ++index) {
            EXPECT_NEAR(parsed[index].start, cues[index].start, 1e-6);
            EXPECT_NEAR(parsed[index].end, cues[index].end, 1e-6);
            EXPECT_EQ(parsed[index].text, cues[index].text);
        }
        EXPECT_EQ(writeSubtitles(parsed, format), written);
    }
}
