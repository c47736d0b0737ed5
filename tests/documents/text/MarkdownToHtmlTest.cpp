#include "documents/markdown/MarkdownToHtml.h"

#include <QRandomGenerator>
#include <QRegularExpression>
#include <QStringList>

#include <gtest/gtest.h>

#include <utility>
#include <vector>

namespace wendrel::test {

namespace {

using Case = std::pair<const char*, const char*>;  // input, expected output

const QString pageStart = QStringLiteral(
    "<!DOCTYPE html>\n<html><head><meta charset=\"utf-8\"><title>T</title>\n<style>body{font-family:"
    "-apple-system,Helvetica,sans-serif;font-size:12pt;line-height:1.45}pre{font-family:Menlo,monospace;"
    "font-size:10pt;background:#f4f4f4;padding:8px}code{font-family:Menlo,monospace}</style>\n</head><body>\n");
const QString pageEnd = QStringLiteral("\n</body></html>");

// What lies between the page's fixed start and end.
QString bodyOf(const char* markdown)
{
    const QString page = markdownToHTML(QString::fromUtf8(markdown), QStringLiteral("T"));
    if (!page.startsWith(pageStart) || !page.endsWith(pageEnd))
        return QStringLiteral("(page frame differs) ") + page;
    return page.sliced(pageStart.size(), page.size() - pageStart.size() - pageEnd.size());
}

// The inline rules written straight from their table as regular expressions, each a global
// replacement of the result before: the reference the converter must agree with everywhere.
QString inlineByPatterns(QString text)
{
    static const std::vector<std::pair<QRegularExpression, QString>> rules = {
        {QRegularExpression(QStringLiteral("&")), QStringLiteral("&amp;")},
        {QRegularExpression(QStringLiteral("<")), QStringLiteral("&lt;")},
        {QRegularExpression(QStringLiteral(">")), QStringLiteral("&gt;")},
        {QRegularExpression(QStringLiteral("`([^`]+)`")), QStringLiteral("<code>\\1</code>")},
        {QRegularExpression(QStringLiteral("!\\[([^\\]]*)\\]\\(([^)]+)\\)")), QStringLiteral("<img alt=\"\\1\" src=\"\\2\">")},
        {QRegularExpression(QStringLiteral("\\[([^\\]]+)\\]\\(([^)]+)\\)")), QStringLiteral("<a href=\"\\2\">\\1</a>")},
        {QRegularExpression(QStringLiteral("\\*\\*([^*]+)\\*\\*")), QStringLiteral("<strong>\\1</strong>")},
        {QRegularExpression(QStringLiteral("__([^_]+)__")), QStringLiteral("<strong>\\1</strong>")},
        {QRegularExpression(QStringLiteral("\\*([^*]+)\\*")), QStringLiteral("<em>\\1</em>")},
        {QRegularExpression(QStringLiteral("(?<![\\w])_([^_]+)_(?![\\w])"), QRegularExpression::UseUnicodePropertiesOption),
         QStringLiteral("<em>\\1</em>")},
        {QRegularExpression(QStringLiteral("~~([^~]+)~~")), QStringLiteral("<del>\\1</del>")},
    };
    for (const auto& [pattern, replacement] : rules)
        text.replace(pattern, replacement);
    return text;
}

}  // namespace

// The rules' order, shown on the cases where it matters; the random test below holds the
// converter to the rules everywhere else.
TEST(MarkdownToHtmlTest, InlineRulesInTheirOrder)
{
    const Case cases[] = {
        {"a & b < c > d \"q\"", "a &amp; b &lt; c &gt; d \"q\""}, {"`<b>`", "<code>&lt;b&gt;</code>"},
        {"[a](x) and ![b](y)", "<a href=\"x\">a</a> and <img alt=\"b\" src=\"y\">"},
        {"[link](http://a.b/?x=1&y=2)", "<a href=\"http://a.b/?x=1&amp;y=2\">link</a>"},
        {"***bi***", "<em><strong>bi</strong></em>"},
        // A flat sequence: the code span is not protected from the emphasis rule after it.
        {"__`a*b*c`__", "<strong><code>a<em>b</em>c</code></strong>"},
        // Asterisk bold can't hold the code span's asterisks: its content excludes them.
        {"**`a*b*c`**", "*<em><code>a</em>b<em>c</code></em>*"},
        // Underscores inside a word stay; around a word with blanks they emphasise.
        {"a_b_c", "a_b_c"}, {"x _e_ y ~~d~~ ~d~", "x <em>e</em> y <del>d</del> ~d~"}, {"é_x_", "é_x_"},
    };
    for (const auto& [input, expected] : cases)
        EXPECT_EQ(inlineMarkdown(QString::fromUtf8(input)), QString::fromUtf8(expected)) << input;
}

// Random strings over the characters the rules care about: the converter's output must be the
// patterns' own, character for character.
TEST(MarkdownToHtmlTest, InlineRulesAgreeWithTheirPatternsOnRandomText)
{
    const QString alphabet = QStringLiteral("*_`[]()!~ab &<>é");
    QRandomGenerator random(20240611);
    for (int round = 0; round < 20000; ++round) {
        QString text;
        const int length = random.bounded(1, 24);
        for (int i = 0; i < length; ++i)
            text += alphabet[random.bounded(alphabet.size())];
        ASSERT_EQ(inlineMarkdown(text), inlineByPatterns(text)) << text.toStdString();
    }
}

TEST(MarkdownToHtmlTest, BlockRules)
{
    const Case cases[] = {
        {"", ""}, {"\n\n", ""}, {"Hello\nworld", "<p>Hello world</p>"}, {"a\n\nb", "<p>a</p>\n<p>b</p>"},
        {"a\r\nb\r\n\r\nc", "<p>a b</p>\n<p>c</p>"}, {"  indented \t", "<p>indented</p>"}, {" \t \nx", "<p>x</p>"},
        {"# Title", "<h1>Title</h1>"}, {"###   Spaced *out*  ", "<h3>Spaced <em>out</em></h3>"},
        {"####### Seven", "<h7>Seven</h7>"}, {"#Tag", "<p>#Tag</p>"}, {"#", "<p>#</p>"},
        {"para\n# H\nnext", "<p>para</p>\n<h1>H</h1>\n<p>next</p>"}, {"---", "<hr>"}, {"***", "<hr>"},
        {"a\n---\nb", "<p>a</p>\n<hr>\n<p>b</p>"}, {"- - -", "<ul>\n<li>- -</li>\n</ul>"},
        {"> quote *x*", "<blockquote><p>quote <em>x</em></p></blockquote>"},
        {"> a\n> b", "<blockquote><p>a</p></blockquote>\n<blockquote><p>b</p></blockquote>"}, {">no", "<p>&gt;no</p>"},
        {"- a\n- b", "<ul>\n<li>a</li>\n<li>b</li>\n</ul>"}, {"* a\n+ b", "<ul>\n<li>a</li>\n<li>b</li>\n</ul>"},
        {"1. a\n22. b", "<ol>\n<li>a</li>\n<li>b</li>\n</ol>"},
        {"- a\n1. b", "<ul>\n<li>a</li>\n</ul>\n<ol>\n<li>b</li>\n</ol>"},
        {"- a\n\n- b", "<ul>\n<li>a</li>\n</ul>\n<ul>\n<li>b</li>\n</ul>"},
        {"\t- tabbed", "<ul>\n<li>tabbed</li>\n</ul>"}, {"-item\n1.5 apples\n1.x", "<p>-item 1.5 apples 1.x</p>"},
        {"para\n- a", "<p>para</p>\n<ul>\n<li>a</li>\n</ul>"},
        // A paragraph line doesn't end the list: the paragraph lands inside it, as the rules say.
        {"- a\ntext", "<ul>\n<li>a</li>\n<p>text</p>\n</ul>"},
        {"```\ncode <x> & y\n  indented\n```", "<pre><code>code &lt;x&gt; &amp; y\n  indented</code></pre>"},
        {"```cpp\nint a;\n```", "<pre><code>int a;</code></pre>"},
        {"```\nnever closed\n*kept*", "<pre><code>never closed\n*kept*</code></pre>"},
        {"```\n```", "<pre><code></code></pre>"},
        {"```\n\n# not a heading\n\n```", "<pre><code>\n# not a heading\n</code></pre>"},
        {"text\n```\nx\n```\nmore", "<p>text</p>\n<pre><code>x</code></pre>\n<p>more</p>"},
        {"- a\n```\nx\n```", "<ul>\n<li>a</li>\n</ul>\n<pre><code>x</code></pre>"},
        {"  ```  \n\tx\n```", "<pre><code>\tx</code></pre>"},
    };
    for (const auto& [input, expected] : cases)
        EXPECT_EQ(bodyOf(input), QString::fromUtf8(expected)) << input;
}

TEST(MarkdownToHtmlTest, WholePageOfASmallFile)
{
    EXPECT_EQ(markdownToHTML(QStringLiteral("# Hi\n\nSome **bold** text."), QStringLiteral("A & <B>")),
              QStringLiteral("<!DOCTYPE html>\n<html><head><meta charset=\"utf-8\"><title>A &amp; &lt;B&gt;</title>\n"
                             "<style>body{font-family:-apple-system,Helvetica,sans-serif;font-size:12pt;"
                             "line-height:1.45}pre{font-family:Menlo,monospace;font-size:10pt;background:#f4f4f4;"
                             "padding:8px}code{font-family:Menlo,monospace}</style>\n</head><body>\n"
                             "<h1>Hi</h1>\n<p>Some <strong>bold</strong> text.</p>\n</body></html>"));
    EXPECT_EQ(markdownToHTML(QString(), QStringLiteral("T")), pageStart + pageEnd);
}

// Long runs of what the rules look for, where a careless scan would go quadratic, and text that
// is no Markdown at all, still give a page holding all of it.
TEST(MarkdownToHtmlTest, HostileInputStillGivesAPage)
{
    const QString brackets = QString(200'000, u'[') + QStringLiteral("](");
    EXPECT_EQ(inlineMarkdown(brackets), brackets);
    const QString stars = QStringLiteral("**") + QString(200'000, u'a');
    EXPECT_EQ(inlineMarkdown(stars), stars);
    QString binary;
    for (int code = 0; code < 0x3000; ++code)
        binary += QChar(char16_t(code));
    const QString page = markdownToHTML(binary, QStringLiteral("T"));
    EXPECT_TRUE(page.endsWith(pageEnd));
    EXPECT_TRUE(page.contains(QStringLiteral("&lt;")));
}

}  // namespace wendrel::test
