#include "DocumentSamples.h"

#include "documents/text/MarkdownLineBreaks.h"
#include "documents/text/TextReaders.h"
#include "support/TestEnvironment.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QTextBlock>
#include <QTextImageFormat>
#include <QUrl>
#include <QTextDocument>

#include <gtest/gtest.h>

namespace wendrel::test {

namespace {

QString dataUrl(const QByteArray& bytes) { return QStringLiteral("data:image/png;base64,") + QString::fromLatin1(bytes.toBase64()); }

}  // namespace

TEST(TextReadersTest, PlainTextKeepsEveryLineAsAParagraph)
{
    const struct {
        const char* text;
        int blocks;
        const char* structure;
    } cases[] = {
        {"one line", 1, "p one line"}, {"a\r\nb\n\nc\n", 4, "p a\np b\np c"},
        {"\xef\xbb\xbftabs\there\rold mac", 2, "p tabs here\np old mac"}, {"", 1, ""},
    };
    for (const auto& c : cases) {
        const auto document = document::readPlainText(QString::fromUtf8(c.text));
        EXPECT_EQ(document->blockCount(), c.blocks) << c.text;
        EXPECT_EQ(structureOf(*document), QString::fromUtf8(c.structure)) << c.text;
    }
}

TEST(TextReadersTest, MarkdownBecomesTheModel)
{
    const QString png = dataUrl(samplePng());
    const struct {
        QString markdown;
        const char* structure;
    } cases[] = {
        {QStringLiteral("# One\n\n### Three *it*\n"), "h1 One\nh3 Three *it*"},
        {QStringLiteral("a `code` **b** ~~s~~ [l](https://x.org/?q=1)"),
         "p a `code` **b** ~~s~~ [l](https://x.org/?q=1)"},
        {QStringLiteral("- a\n  1. b\n     - c\n- d\n"), "ul1 a\nol2 b\nul3 c\nul1 d"},
        {QStringLiteral("| h | i |\n|---|---|\n| 1 | 2 |\n"),
         "table 2x2 header 1\ncell 0,0 p **h**\ncell 0,1 p **i**\ncell 1,0 p 1\ncell 1,1 p 2"},
        {QStringLiteral("line\\\nbreak and  \ntwo spaces\n\n# heading\\\nnext\n"),
         "p line⏎break and⏎two spaces\nh1 heading\\\np next"},
        {QStringLiteral("```\ncode\\\nstays\n```\n"), "p `code\\`\np `stays`"},
        {QStringLiteral("![x](") + png + QStringLiteral(") after"), "picture 40x20\np [picture] after"},
    };
    for (const auto& c : cases) {
        const auto document = document::readMarkdown(c.markdown, QString());
        EXPECT_EQ(structureOf(*document), QString::fromUtf8(c.structure)) << c.markdown.left(80).toStdString();
    }
}

TEST(TextReadersTest, HardLineBreaksAreMarkedOnlyInParagraphs)
{
    const QChar lineBreak(QChar::LineSeparator);
    const struct {
        QString markdown;
        QString marked;
    } cases[] = {
        {QStringLiteral("a\\\nb"), QStringLiteral("a") + lineBreak + u'b'},
        {QStringLiteral("a   \n   b"), QStringLiteral("a") + lineBreak + u'b'},
        {QStringLiteral("a\\\\\nb"), QStringLiteral("a\\\\\nb")},  // an escaped backslash
        {QStringLiteral("a\\\n- b"), QStringLiteral("a\\\n- b")},  // a list begins
        {QStringLiteral("a\\\n\nb"), QStringLiteral("a\\\n\nb")},
        {QStringLiteral("| a |\\\nb"), QStringLiteral("| a |\\\nb")},
        {QStringLiteral("~~~\na\\\nb\n~~~\nc\\\nd"), QStringLiteral("~~~\na\\\nb\n~~~\nc") + lineBreak + u'd'},
    };
    for (const auto& c : cases)
        EXPECT_EQ(document::markHardLineBreaks(c.markdown), c.marked) << c.markdown.toStdString();
}

TEST(TextReadersTest, HtmlBecomesTheModel)
{
    const QString png = dataUrl(samplePng());
    const struct {
        QString html;
        const char* structure;
    } cases[] = {
        {QStringLiteral("<h2>Two</h2><p>a <code>c</code> <tt>t</tt> <span style='font-family:Courier New'>m</span> "
                        "<b>b</b> <i>i</i> <u>u</u> <s>s</s> <a href='rel/x.html'>l</a><br>next</p>"),
         "h2 Two\np a `c` `t` `m` **b** *i* _u_ ~~s~~ [l](rel/x.html)⏎next"},
        {QStringLiteral("<ul><li>a<ol><li>b</li></ol></li><li>c</li></ul>"), "ul1 a\nol2 b\nul1 c"},
        {QStringLiteral("<table><thead><tr><th>h</th></tr></thead><tr><td>1</td></tr></table>"),
         "table 1x2 header 1\ncell 0,0 p **h**\ncell 1,0 p 1"},
        {QStringLiteral("<p>x <img src='") + png + QStringLiteral("' width='60' height='30'></p>"),
         "picture 40x20\np x [picture]"},
    };
    for (const auto& c : cases) {
        const auto document = document::readHtml(c.html, QString());
        EXPECT_EQ(structureOf(*document), QString::fromUtf8(c.structure)) << c.html.left(80).toStdString();
    }
}

TEST(TextReadersTest, PicturesAreReadFromTheBaseFolderAndSizedInPoints)
{
    QTemporaryDir folder;
    ASSERT_TRUE(folder.isValid());
    QDir(folder.path()).mkdir(QStringLiteral("img"));
    writeFile(folder.filePath(QStringLiteral("img/red dot.png")), samplePng());

    const auto html = document::readHtml(QStringLiteral("<img src='img/red%20dot.png' width='40'>"), folder.path());
    EXPECT_EQ(structureOf(*html), QStringLiteral("picture 40x20\np [picture]"));
    EXPECT_DOUBLE_EQ(pictureSizes(*html).value(0).width(), 30.0);  // 40 CSS pixels are 30 points
    EXPECT_TRUE(html->begin().begin().fragment().charFormat().toImageFormat().name().startsWith(u"wendrel-picture:"));

    const auto markdown = document::readMarkdown(QStringLiteral("![a](<img/red dot.png>) ![b](<")
                                                     + QUrl::fromLocalFile(folder.filePath(QStringLiteral("img/red dot.png"))).toString()
                                                     + QStringLiteral(">)"),
                                                 folder.path());
    EXPECT_EQ(structureOf(*markdown), QStringLiteral("picture 40x20\npicture 40x20\np [picture] [picture]"));
}

// Whatever a document refers to, reading it finishes at once, takes no more memory than the
// picture limit, and reads no file that isn't a picture: the reference is dropped.
TEST(TextReadersTest, HostilePictureReferencesAreDropped)
{
    QTemporaryDir folder;
    ASSERT_TRUE(folder.isValid());
    {
        QFile huge(folder.filePath(QStringLiteral("huge.png")));
        ASSERT_TRUE(huge.open(QIODevice::WriteOnly));
        huge.write(samplePng());
        ASSERT_TRUE(huge.resize(qint64(65) * 1024 * 1024));  // sparse: no disk is filled
    }
    writeFile(folder.filePath(QStringLiteral("secret.txt")), "not a picture");
    QFile::link(QStringLiteral("/dev/zero"), folder.filePath(QStringLiteral("zero.png")));

    const char* sources[] = {
        "/dev/zero", "zero.png", "/dev/urandom", "/proc/self/environ", "huge.png", "missing.png",
        "secret.txt", "http://127.0.0.1:9/x.png", "qrc:/icon.png", "data:image/png;base64,!!!!", "", "/",
    };
    for (const char* source : sources) {
        const QString html = QStringLiteral("<p>a<img src='%1'>b</p><table background='%1'><tr><td>c</td></tr></table>")
                                 .arg(QString::fromUtf8(source));
        const auto fromHtml = document::readHtml(html, folder.path());
        EXPECT_EQ(structureOf(*fromHtml), QStringLiteral("p ab\ntable 1x1 header 0\ncell 0,0 p c")) << source;
        const auto fromMarkdown =
            document::readMarkdown(QStringLiteral("a![x](<%1>)b").arg(QString::fromUtf8(source)), folder.path());
        EXPECT_EQ(structureOf(*fromMarkdown), QStringLiteral("p ab")) << source;
    }
}

}  // namespace wendrel::test
