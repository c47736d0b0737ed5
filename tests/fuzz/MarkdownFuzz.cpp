// libFuzzer target for Markdown to HTML: any UTF-8 gives a complete page, in time linear enough
// for the fuzzer's timeout; never a crash.
#include "FuzzSupport.h"

#include "documents/markdown/MarkdownToHtml.h"

using namespace wendrel;
using namespace wendrel::fuzz;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const QString markdown = QString::fromUtf8(bytesOf(data, size));
    const QString page = markdownToHTML(markdown, markdown.left(40));
    REQUIRE(page.startsWith(u"<!DOCTYPE html>"));
    REQUIRE(page.endsWith(u"</body></html>"));
    // The title is escaped: whatever the text, the head holds exactly one title element.
    const qsizetype bodyAt = page.indexOf(u"<body>");
    REQUIRE(bodyAt > 0 && page.left(bodyAt).count(u"</title>") == 1);
    return 0;
}
