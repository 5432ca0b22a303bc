// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>

#include <nlohmann/json.hpp>
#include <string>
#include <tools/plex/Output.hpp>
#include <tools/plex/Printable.hpp>

namespace ovra::plex::tool
{

namespace
{

TEST(Printable, LeavesWhatIsText)
{
    for (const std::string text : {"", "dome/position", "\"µs\" → 10 °C", "日本語", "😀", "\\u001b"}) {
        EXPECT_EQ(printable(text), text);
    }
}

TEST(Printable, WritesOutWhatATerminalObeys)
{
    EXPECT_EQ(printable("a\x1b]0;title\x07z"), "a\\u001b]0;title\\u0007z");
    EXPECT_EQ(printable("\x7f\r\b"), "\\u007f\\u000d\\u0008");
    EXPECT_EQ(printable(std::string("\0", 1)), "\\u0000");
    EXPECT_EQ(printable("\xc2\x9b"
                        "2J"),
              "\\u009b2J");                          // begins a sequence as ESC [ does
    EXPECT_EQ(printable("\xe2\x80\xae"), "\\u202e"); // from right to left
}

TEST(Printable, KeepsTheLayoutWhereItIsAskedTo)
{
    EXPECT_EQ(printable("a\tb\nc"), "a\\tb\\nc");
    EXPECT_EQ(printable("a\tb\nc\r", Layout::Kept), "a\tb\nc\\u000d");
}

TEST(Printable, WritesOutBytesThatAreNoText)
{
    EXPECT_EQ(printable("\x9b"
                        "2J\xff"),
              "\\x9b2J\\xff");
    EXPECT_EQ(printable("\xc3"), "\\xc3");                            // cut off
    EXPECT_EQ(printable("\xc3("), "\\xc3(");                          // not continued
    EXPECT_EQ(printable("\xc0\x9b"), "\\xc0\\x9b");                   // in too many bytes
    EXPECT_EQ(printable("\xed\xa0\x80"), "\\xed\\xa0\\x80");          // half of a pair
    EXPECT_EQ(printable("\xf4\x90\x80\x80"), "\\xf4\\x90\\x80\\x80"); // beyond the last character
}

/// What is written to the standard output.
template <class Write>
std::string writtenBy(Write write)
{
    testing::internal::CaptureStdout();
    write();
    return testing::internal::GetCapturedStdout();
}

TEST(OutputTest, GivesNoTerminalWhatNamesHold)
{
    EXPECT_EQ(writtenBy([] { writeLine("\x1b[2J"); }), "\\u001b[2J\n");
    EXPECT_EQ(writtenBy([] { writeLine(coloured("\x1b[2J", Colour::Red) + "\x1b[31m"); }),
              "\\u001b[2J\\u001b[31m\n");
    EXPECT_EQ(writtenBy([] { writeLine("one\ttwo\nthree\x1b"); }), "one\ttwo\nthree\\u001b\n");
}

TEST(OutputTest, WritesJsonThatCanBeReadWhateverNamesHold)
{
    const std::string name = "\x1b[2J\x7f\xc2\x9b";
    const auto text = writtenBy([&] { writeJson({{"name", name}}); });
    EXPECT_EQ(text, "{\"name\":\"\\u001b[2J\\u007f\\u009b\"}\n");
    EXPECT_EQ(nlohmann::json::parse(text).at("name"), name);
    EXPECT_EQ(writtenBy([] { writeJson({{"name", "a\xff"}}); }), "{\"name\":\"a\xef\xbf\xbd\"}\n");
    EXPECT_EQ(writtenBy([] { writeJson({{"a", 1}}, 2); }), "{\n  \"a\": 1\n}\n");
}

} // namespace

} // namespace ovra::plex::tool
