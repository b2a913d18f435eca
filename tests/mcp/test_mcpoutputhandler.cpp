#include "mcp/mcpoutputhandler.h"

#include <gtest/gtest.h>

namespace {

struct MarkupCase
{
    const char* name;
    QString message;
    QString collected;
};

class McpOutputMarkup : public ::testing::TestWithParam<MarkupCase>
{
};

TEST_P(McpOutputMarkup, IsStrippedGreedilyUpToAFullStop)
{
    MCPOutputHandler output;
    output.writeLine(GetParam().message);
    EXPECT_EQ(output.collectedText(), GetParam().collected);
}

INSTANTIATE_TEST_SUITE_P(
    Messages, McpOutputMarkup,
    ::testing::Values(MarkupCase{"Plain", QStringLiteral("Generation completed"),
                                 QStringLiteral("Generation completed\n")},
                      // Both tags and no full stop between them: the words go with the tags.
                      MarkupCase{"HeadingVanishes", QStringLiteral("<strong>Checking line 0</strong>"),
                                 QStringLiteral("\n")},
                      MarkupCase{"FullStopEndsTheMatch",
                                 QStringLiteral("<b>ERROR - Generation of gen_define.h failed.</b>"),
                                 QStringLiteral("ERROR - Generation of gen_define.h failed.\n")},
                      MarkupCase{"EntitiesStay", QStringLiteral("a &amp; b"), QStringLiteral("a &amp; b\n")}),
    [](const ::testing::TestParamInfo<MarkupCase>& info) { return std::string(info.param.name); });

TEST(McpOutputHandler, TakeBufferEmptiesIt)
{
    MCPOutputHandler output;
    output.writeLine(QStringLiteral("first"));
    output.writeEmphasized(QStringLiteral("second"));
    EXPECT_EQ(output.takeBuffer(), QStringLiteral("first\nsecond\n"));
    EXPECT_EQ(output.collectedText(), QString());
    output.writeLine(42);
    EXPECT_EQ(output.takeBuffer(), QStringLiteral("42\n"));
}

} // namespace
