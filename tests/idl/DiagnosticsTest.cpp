// SPDX-License-Identifier: Apache-2.0
#include "Idl.hpp"

namespace plex::test
{

namespace
{

std::string reportOn(const std::string& text)
{
    return toString(parseText(text, "dome.idl").diagnostics);
}

TEST(Diagnostics, ShowTheLineThePlaceAndAHint)
{
    EXPECT_EQ(reportOn("struct A {\n\tint alt;\n};\n"), "dome.idl:2:2: error: unknown type \"int\"\n"
                                                        "\tint alt;\n"
                                                        "\t^\n"
                                                        "hint: write long or int32\n");
}

TEST(Diagnostics, PlaceTheCaretByCharacters)
{
    EXPECT_EQ(reportOn("/* \u00e4\u00f6\u00fc */ x;"),
              "dome.idl:1:11: error: a declaration is expected here, not \"x\"\n"
              "/* \u00e4\u00f6\u00fc */ x;\n"
              "          ^\n"
              "hint: such as module, struct, union, enum, bitmask, typedef or const\n");
}

TEST(Diagnostics, ShowNothingThatATerminalWouldObey)
{
    const std::string report = reportOn("x \x1b[31m \xff;");
    EXPECT_THAT(report, testing::HasSubstr("\nx  [31m ?;\n^\n"));
    EXPECT_EQ(report.find('\x1b'), std::string::npos);
}

TEST(Diagnostics, TellWarningsFromErrors)
{
    EXPECT_EQ(reportOn("#pragma x\n"), "dome.idl:1:2: warning: #pragma x has no effect\n#pragma x\n ^\n");
}

TEST(Diagnostics, StopAfterAHundredErrors)
{
    std::string text = "struct S {\n";
    for (int i = 0; i < 1000; ++i) {
        text += "  Unknown m" + std::to_string(i) + ";\n";
    }
    const ParseResult result = parseText(text + "};\n", "dome.idl");
    EXPECT_EQ(result.diagnostics.errors(), Diagnostics::MaximumErrors);
    EXPECT_THAT(toString(result.diagnostics), testing::EndsWith("\nStopped after 100 errors.\n"));
}

TEST(Diagnostics, NameAFileThatCanNotBeRead)
{
    const ParseResult result = parseFile("/no/such/file.idl");
    EXPECT_EQ(toString(result.diagnostics), "/no/such/file.idl: error: cannot read the file\n");
    EXPECT_FALSE(result.model.has_value());
}

TEST(Diagnostics, ComeForEachMistake)
{
    EXPECT_THAT(complaintsOf("struct A { long a long b; X c; };\nstruct B : A { long a; }\nenum A { };\n"),
                testing::ElementsAre("1:18: \";\" is missing", "1:27: unknown type \"X\"",
                                     "2:21: a member \"a\" is already declared in the base",
                                     "2:25: \";\" is missing", "3:6: \"A\" is already declared",
                                     "3:9: an enumerator is missing"));
}

} // namespace

} // namespace plex::test
