#include "DocumentSamples.h"

#include "documents/rtf/RtfReader.h"

#include <QTextDocument>

#include <gtest/gtest.h>

namespace wendrel::test {

namespace {

struct ReadCase {
    const char* name;
    QByteArray rtf;  // "PNGHEX" stands for the sample PNG in hexadecimal
    const char* expected;
};

QByteArray withSamplePng(QByteArray rtf)
{
    return rtf.replace("PNGHEX", samplePng().toHex());
}

// The word-processor-style header most cases share.
const QByteArray header = "{\\rtf1\\ansi\\ansicpg1252\\deff0{\\fonttbl{\\f0\\froman\\fcharset0 Times New Roman;}"
                          "{\\f1\\fmodern\\fcharset0\\fprq1 Courier New;}{\\f2\\fcharset204 Arial Cyr;}"
                          "{\\f3\\fnil\\fcharset128 MS Mincho;}{\\f4\\fswiss Consolas;}}"
                          "{\\colortbl;\\red0\\green0\\blue255;}\n";

// A list table as word processors write it: list 1 bullets then numbers, list 2 numbers.
const QByteArray listTables =
    "{\\*\\listtable{\\list\\listtemplateid100{\\listlevel\\levelnfc23\\levelnfcn23\\leveljc0\\levelstartat1"
    "{\\leveltext\\leveltemplateid1\\'01\\u-3913 ?;}{\\levelnumbers;}\\f3\\fi-360\\li720}"
    "{\\listlevel\\levelnfc0\\levelnfcn0{\\leveltext\\'02\\'01.;}{\\levelnumbers\\'01;}\\fi-360\\li1440}"
    "{\\listname ;}\\listid11}"
    "{\\list\\listtemplateid200{\\listlevel\\levelnfc4{\\leveltext\\'02\\'00);}{\\levelnumbers\\'01;}}\\listid22}}"
    "{\\*\\listoverridetable{\\listoverride\\listid11\\listoverridecount0\\ls1}"
    "{\\listoverride\\listid22\\listoverridecount0\\ls2}}\n";

}  // namespace

TEST(RtfReaderTest, ReadsWhatWordProcessorsWrite)
{
    const ReadCase cases[] = {
        {"Windows-1252 bytes", header + "\\pard Caf\\'e9 \\'93quoted\\'94 costs \\'80 5\\par}",
         "p Café “quoted” costs € 5"},
        {"the document's code page", "{\\rtf1\\ansi\\ansicpg1251 \\'cf\\'f0\\'e8\\'e2\\'e5\\'f2\\par}", "p Привет"},
        {"a font's charset", header + "\\pard\\f2 \\'cf\\'f0\\'e8\\'e2\\'e5\\'f2\\f0  and \\'e9\\par}",
         "p Привет and é"},
        {"a double-byte code page", header + "\\pard\\f3 \\'93\\'fa\\'96\\'7b\\f0  ok\\par}", "p 日本 ok"},
        {"\\u with \\uc fallbacks",
         header + "\\pard\\uc1 caf\\u233\\'e9 {\\uc2\\u8364\\'80\\'80} ok {\\uc0\\u26085} \\u-10179 ?\\u-8704 ? "
                  "\\u8212\\'97\\emdash\\par}",
         "p café € ok 日 😀 ——"},
        {"styles named as headings and outline levels",
         header + "{\\stylesheet{\\s0\\f0 Normal;}{\\s1\\sbasedon0\\snext0{\\*\\keycode x} heading 1;}"
                  "{\\s2\\outlinelevel1 Title Two;}{\\*\\cs10 Default Paragraph Font;}}\n"
                  "\\pard\\plain\\s1 First\\par\\pard\\plain\\s2 Second\\par\\pard\\outlinelevel2 Third\\par"
                  "\\pard\\s0 Body\\par}",
         "h1 First\nh2 Second\nh3 Third\np Body"},
        {"inline styles",
         header + "\\pard\\b bold\\b0 , {\\i it}, \\ul u\\ulnone , \\uldb dbl\\ul0 , \\strike s\\strike0 , "
                  "\\striked1 d\\striked0 , {\\f1 code}, {\\f4 mono}, \\b\\i both\\plain  plain\\par}",
         "p **bold**, *it*, _u_, _dbl_, ~~s~~, ~~d~~, `code`, `mono`, ***both*** plain"},
        {"lists from list tables",
         header + listTables +
             "{\\listtext\\pard\\plain\\f3 \\'b7\\tab}\\pard\\ls1\\ilvl0\\fi-360\\li720 one\\par"
             "{\\listtext\\pard\\plain 1.\\tab}\\pard\\ls1\\ilvl1 sub\\par"
             "{\\listtext\\pard\\plain\\f3 \\'b7\\tab}\\pard\\ls1\\ilvl0 two\\par"
             "\\pard after\\par\\pard\\ls2\\ilvl0 {\\pntext a)\\tab}first\\par}",
         "ul1 one\nol2 sub\nul1 two\np after\nol1 first"},
        {"older paragraph numbering",
         header + "{\\pntext\\f3\\'b7\\tab}\\pard{\\*\\pn\\pnlvlblt\\pnf3\\pnindent360{\\pntxtb\\'b7}}dot\\par"
                  "{\\pntext 1.\\tab}\\pard{\\*\\pn\\pnlvlbody\\pndec\\pnstart1{\\pntxta .}}number\\par"
                  "\\pard plain\\par}",
         "ul1 dot\nol1 number\np plain"},
        {"markers typed on a hanging indent",
         header + "\\pard\\li360\\fi-360 \\bullet\\tab item\\par\\pard\\li720\\fi-360 2.\\tab deeper\\par"
                  "\\pard 3.\\tab no indent\\par}",
         "ul1 item\nol2 deeper\np 3. no indent"},
        {"a nested table",
         header + "\\trowd\\cellx4000\\cellx8000\n"
                  "\\pard\\intbl\\itap1 outer\\par\n"
                  "\\pard\\intbl\\itap2 in one\\nestcell\\pard\\intbl\\itap2 in two\\nestcell\n"
                  "{\\*\\nesttableprops\\trowd\\cellx2000\\cellx4000\\nestrow}{\\nonesttables\\par}\n"
                  "\\pard\\intbl\\itap1\\cell\\pard\\intbl\\itap1 right\\cell\n"
                  "\\trowd\\cellx4000\\cellx8000\\row\\pard after\\par}",
         "table 2x1 header 0\ncell 0,0 p outer\ntable 2x1 header 0\ncell 0,0 p in one\ncell 0,1 p in two\n"
         "cell 0,1 p right\np after"},
        {"merged cells and a heading row",
         header + "\\trowd\\trhdr\\clmgf\\cellx2000\\clmrg\\cellx4000\\clvmgf\\cellx6000\n"
                  "\\pard\\intbl wide\\cell\\pard\\intbl\\cell\\pard\\intbl tall\\cell\\row\n"
                  "\\trowd\\cellx2000\\cellx4000\\clvmrg\\cellx6000\n"
                  "\\pard\\intbl a\\cell\\pard\\intbl b\\cell\\pard\\intbl\\cell\\row}",
         "table 3x2 header 1\ncell 0,0 p wide\ncell 0,2 p tall\ncell 1,0 p a\ncell 1,1 p b"},
        {"hyperlink fields",
         header + "\\pard see {\\field{\\*\\fldinst{HYPERLINK \"https://x.org/?a=1&b=2\" \\\\o \"tip\"}}"
                  "{\\fldrslt{\\ul\\cf1 the site}}} or {\\field{\\*\\fldinst HYPERLINK \\\\l \"top\"}"
                  "{\\fldrslt back}} on page {\\field{\\*\\fldinst PAGE}{\\fldrslt 3}}\\par}",
         "p see [the site](https://x.org/?a=1&b=2) or [back](#top) on page 3"},
        {"pictures, the shape picture preferred",
         withSamplePng(header + "\\pard pic {\\*\\shppict{\\pict{\\*\\picprop{\\sp{\\sn x}{\\sv 1}}}"
                                "\\pngblip\\picw40\\pich20\\picwgoal600\\pichgoal300 PNGHEX}}"
                                "{\\nonshppict{\\pict\\wmetafile8 0102}} and {\\pict\\emfblip 0102} done\\par}"),
         "picture 40x20\np pic [picture] and done"},
        {"binary picture data", header + "\\pard {\\pict\\pngblip\\bin" + QByteArray::number(samplePng().size()) +
                                    " " + samplePng() + "}\\par}",
         "picture 40x20\np [picture]"},
        {"headers, footers, footnotes and information left out",
         header + "{\\info{\\title T}{\\author A}}{\\header Head}{\\footer Foot}\\pard Body"
                  "{\\super\\chftn}{\\footnote\\pard\\plain Note}.{\\*\\bkmkstart b}{\\*\\unknown hidden}"
                  "\\unknownword  end\\par}",
         "p Body. end"},
        {"breaks, tabs and escapes", header + "\\pard a\\line b\\tab c \\{d\\} \\\\ e\\~f\\par}", "p a⏎b c {d} \\ e f"},
        {"text after the last paragraph mark", "{\\rtf1 {\\b tail}}", "p **tail**"},
    };
    for (const ReadCase& testCase : cases) {
        SCOPED_TRACE(testCase.name);
        std::unique_ptr<QTextDocument> document;
        ASSERT_NO_THROW(document = readRtf(testCase.rtf));
        EXPECT_EQ(structureOf(*document).toStdString(), testCase.expected);
    }
}

TEST(RtfReaderTest, PictureSizeComesFromGoalAndScale)
{
    const auto document = readRtf(withSamplePng(
        "{\\rtf1 {\\pict\\pngblip\\picwgoal600\\pichgoal300\\picscalex50\\picscaley200 PNGHEX}\\par}"));
    EXPECT_EQ(pictureSizes(*document), QList<QSizeF>{QSizeF(15, 30)});
}

}  // namespace wendrel::test
