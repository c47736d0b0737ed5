#include "DocumentSamples.h"

#include <QTextDocument>

#include <gtest/gtest.h>

namespace wendrel::test {

// The sample every round trip starts from, as the structure reader sees it: the reference the
// format tests compare against.
TEST(DocumentModelTest, SampleDocumentHasEveryKindOfStructure)
{
    const auto document = richSampleDocument();
    EXPECT_EQ(structureOf(*document).toStdString(),
              "h1 Quarterly Report\n"
              "p Plain, **bold**, *italic*, _underlined_, ~~struck~~, `code`, a [link](https://example.org/a?b=1&c=2)"
              " and Ünïcödé — 日本語 <tags> & {braces} \\ back\n"
              "h2 Lists\n"
              "ul1 First\n"
              "ul1 Second\n"
              "ol2 Sub one\n"
              "ol2 Sub two\n"
              "ul1 Third\n"
              "h2 Table\n"
              "table 2x3 header 1\n"
              "cell 0,0 p **Name**\n"
              "cell 0,1 p **Value**\n"
              "cell 1,0 p Width\n"
              "cell 1,1 p 42\n"
              "cell 2,0 p Text with, comma\n"
              "cell 2,1 p \"quoted\"\n"
              "picture 40x20\n"
              "p A picture: [picture] and a line⏎break.");
    EXPECT_EQ(structureOf(*document, false).section(u'\n', 1, 1).toStdString(),
              "p Plain, bold, italic, underlined, struck, code, a link and Ünïcödé — 日本語 <tags> & {braces} \\ back");
}

}  // namespace wendrel::test
