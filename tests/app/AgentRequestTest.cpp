#include "app/shell/AgentRequest.h"

#include <gtest/gtest.h>

using namespace wendrel;

TEST(AgentRequest, RingRequestsTravelAsOneLine)
{
    AgentRequest request;
    request.command = AgentRequest::Command::ring;
    request.ring = RingKind::tools;
    request.files = {QStringLiteral("/home/me/Été 2026/photo 1.jpg"), QStringLiteral("/tmp/a\nb.png")};
    const QByteArray line = request.toLine();
    EXPECT_EQ(line.count('\n'), 1);
    EXPECT_TRUE(line.endsWith('\n'));
    EXPECT_EQ(AgentRequest::fromLine(line), request);
    EXPECT_EQ(AgentRequest::fromLine(AgentRequest{}.toLine()), AgentRequest{});
}

TEST(AgentRequest, AnythingMalformedIsIgnored)
{
    for (const char* line : {"", "not json", "[]", R"({"command":"explode"})", R"({"command":"ring","ring":"misc","files":["/a"]})",
                             R"({"command":"ring","ring":"tools"})", R"({"command":"ring","ring":"tools","files":[]})",
                             R"({"command":"ring","ring":"tools","files":"/a"})", R"({"command":"ring","ring":"tools","files":[3]})",
                             R"({"command":"ring","ring":"tools","files":[""]})"})
        EXPECT_EQ(AgentRequest::fromLine(line), std::nullopt) << line;
}
