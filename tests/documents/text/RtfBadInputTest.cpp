#include "DocumentSamples.h"

#include "documents/rtf/RtfReader.h"
#include "documents/rtf/RtfWriter.h"
#include "operations/OperationError.h"

#include <QRandomGenerator>
#include <QTextDocument>

#include <gtest/gtest.h>

namespace wendrel::test {

namespace {

QByteArray repeated(const char* piece, int times)
{
    return QByteArray(piece).repeated(times);
}

enum class Outcome { Refused, Read };

struct BadInput {
    const char* name;
    QByteArray bytes;
    Outcome outcome;
    const char* expected;  // the structure read, for Outcome::Read
};

}  // namespace

TEST(RtfBadInputTest, BadInputIsRefusedOrReadAsFarAsItGoes)
{
    const QByteArray deep = "{\\rtf1 " + repeated("{", 100'000) + "deep" + repeated("}", 100'000) + "\\par}";
    const QByteArray cut = writeRtf(*richSampleDocument());
    static constexpr char withNulBytes[] = "{\\rtf1 a\0b\x01" "c\\par}";
    const QByteArray withNul(withNulBytes, sizeof withNulBytes - 1);
    const BadInput cases[] = {
        {"empty", "", Outcome::Refused, ""}, {"plain text", "Dear reader,\nthis is not RTF.", Outcome::Refused, ""},
        {"a PDF", "%PDF-1.7\n1 0 obj <<>> endobj", Outcome::Refused, ""},
        {"only the opening", "{\\rtf", Outcome::Read, ""},
        {"never closed", "{\\rtf1 unclosed {\\b bold", Outcome::Read, "p unclosed **bold**"},
        {"too many closing braces", "{\\rtf1 a\\par}}}} b\\par}", Outcome::Read, "p a"},
        {"100,000 nested groups", deep, Outcome::Read, "p deep"},
        {"100,000 groups never closed", "{\\rtf1 " + repeated("{\\b ", 100'000) + "x", Outcome::Read, "p **x**"},
        {"a huge \\bin", "{\\rtf1 a{\\pict\\pngblip\\bin999999999999 abc}b\\par}", Outcome::Read, "p a"},
        {"a negative \\bin", "{\\rtf1 a{\\bin-5 }b\\par}", Outcome::Read, "p ab"},
        {"odd and broken hex", "{\\rtf1 {\\pict\\pngblip 89504e4}x\\'zz\\'4y\\'\\par}", Outcome::Read, "p xzzy"},
        {"a backslash at the very end", "{\\rtf1 x\\", Outcome::Read, "p x"},
        {"numbers out of range",
         "{\\rtf1{\\uc99999999 \\u99999999 abc}d\\u-99999999 ?e\\fs99999999999999999999 f\\itap-7\\intbl g\\cell\\row}",
         Outcome::Read, "table 1x1 header 0\ncell 0,0 p defg"},
        {"a control word far too long", "{\\rtf1 " + repeated("x", 100'000).prepend("\\") + " y\\par}", Outcome::Read,
         "p y"},
        {"NUL and control bytes", withNul, Outcome::Read, "p abc"},
        {"one very wide row", "{\\rtf1 " + repeated("\\intbl x\\cell", 10'000) + "\\row}", Outcome::Read, nullptr},
        {"too many table cells", "{\\rtf1 " + repeated("\\intbl\\cell", 250'000) + "}", Outcome::Refused, ""},
        {"tables nested beyond reason", "{\\rtf1\\intbl\\itap100000 x\\nestcell\\nestrow}", Outcome::Read, nullptr},
        {"a table with no rows ended", "{\\rtf1\\trowd\\cellx100\\intbl a\\cell b", Outcome::Read,
         "table 2x1 header 0\ncell 0,0 p a\ncell 0,1 p b"},
        {"row and cell marks outside tables", "{\\rtf1\\row\\nestrow\\cell x\\par}", Outcome::Read,
         "table 1x1 header 0\np x"},
        {"cell widths without end", "{\\rtf1" + repeated("\\cellx1", 100'000) + " x\\par}", Outcome::Read, "p x"},
        {"a cut-off document", cut.left(cut.size() / 2), Outcome::Read, nullptr},
        {"unbalanced field", "{\\rtf1 {\\field{\\*\\fldinst HYPERLINK \"u\"}{\\fldrslt a}}}}b}", Outcome::Read,
         "p [a](u)"},
        {"a picture that isn't one", "{\\rtf1 {\\pict\\pngblip 0123456789abcdef}\\par}", Outcome::Read, ""},
        {"a PNG cut off in its header", "{\\rtf1 {\\pict\\pngblip 89504e470d0a1a0a0000000d4948}\\par}", Outcome::Read, ""},
    };
    for (const BadInput& testCase : cases) {
        SCOPED_TRACE(testCase.name);
        if (testCase.outcome == Outcome::Refused) {
            EXPECT_THROW(readRtf(testCase.bytes), OperationError);
            continue;
        }
        std::unique_ptr<QTextDocument> document;
        ASSERT_NO_THROW(document = readRtf(testCase.bytes));
        // Nothing read is larger than what it came from.
        EXPECT_LE(document->characterCount(), testCase.bytes.size() + 1);
        if (testCase.expected) {
            EXPECT_EQ(structureOf(*document).toStdString(), testCase.expected);
        }
    }
}

TEST(RtfBadInputTest, OneVeryWideRowKeepsItsTextInSixtyFourColumns)
{
    const auto document = readRtf("{\\rtf1 " + repeated("\\intbl x\\cell", 100) + "\\row}");
    const QString structure = structureOf(*document);
    ASSERT_TRUE(structure.startsWith(QStringLiteral("table 64x1 header 0\n")));
    EXPECT_EQ(structure.section(u'\n', 1).count(u'x'), 100);
}

// Random bytes after a valid opening, and random damage to a real document: never a crash.
TEST(RtfBadInputTest, RandomDamageNeverCrashes)
{
    QRandomGenerator random(20240607);
    const QByteArray sample = writeRtf(*richSampleDocument());
    for (int round = 0; round < 200; ++round) {
        QByteArray bytes;
        if (round % 2 == 0) {
            bytes = "{\\rtf1 ";
            for (int index = 0; index < 2000; ++index)
                bytes.append(static_cast<char>(random.bounded(256)));
        } else {
            bytes = sample;
            for (int hit = 0; hit < 20; ++hit)
                bytes[random.bounded(7, static_cast<int>(bytes.size()))] = "{}\\'0 ab*"[random.bounded(9)];
        }
        try {
            const auto document = readRtf(bytes);
            EXPECT_LE(document->characterCount(), bytes.size() + 1);
        } catch (const OperationError&) {
            // a clear refusal is as good as a reading
        }
    }
}

}  // namespace wendrel::test
