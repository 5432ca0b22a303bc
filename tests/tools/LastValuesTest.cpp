// SPDX-License-Identifier: Apache-2.0
#include <gmock/gmock.h>

#include <cstdint>
#include <string>
#include <tools/plex/LastValues.hpp>

namespace ovra::plex::tool
{

namespace
{

using testing::ElementsAre;
using testing::Le;
using testing::SizeIs;

/// Values that are texts.
class LastValuesTest : public testing::Test
{
protected:
    void add(const std::string& text) { values.add({text.begin(), text.end()}); }

    int inWords = 0; ///< how many were put into words
    LastValues values{[this](const LastValues::Payload& payload) {
        ++inWords;
        return std::string(payload.begin(), payload.end());
    }};
};

TEST_F(LastValuesTest, ComeInOrder)
{
    EXPECT_THAT(values.lines(), SizeIs(0));
    add("a");
    add("b");
    EXPECT_THAT(values.lines(), ElementsAre("a", "b"));
    add("c");
    EXPECT_THAT(values.lines(), ElementsAre("a", "b", "c"));
    EXPECT_EQ(inWords, 3); // each once
}

TEST_F(LastValuesTest, MayBeEmpty)
{
    add("");
    EXPECT_THAT(values.lines(), ElementsAre(""));
    EXPECT_EQ(inWords, 1);
}

TEST_F(LastValuesTest, AreAsManyAsFitAScreenAndAreReadOnlyWhenTheyAreLookedAt)
{
    for (int i = 0; i < 50'000; ++i) {
        add(std::to_string(i));
        ASSERT_LE(values.bytes(), LastValues::mostValues * 5);
    }
    EXPECT_EQ(inWords, 0);
    const auto lines = values.lines();
    ASSERT_THAT(lines, SizeIs(LastValues::mostValues));
    EXPECT_EQ(lines.front(), "49900");
    EXPECT_EQ(lines.back(), "49999");
    EXPECT_EQ(inWords, 100);
}

TEST_F(LastValuesTest, TakeABoundedNumberOfBytesHoweverLargeTheyAre)
{
    const std::string large(100'000, 'x');
    for (int i = 0; i < 2000; ++i) {
        add(large);
        ASSERT_LE(values.bytes(),
                  LastValues::mostPayloadBytes + LastValues::mostValues * LastValues::longestLine);
        if (i % 70 == 0) {
            values.lines();
            ASSERT_LE(values.bytes(), LastValues::mostValues * LastValues::longestLine);
        }
    }
    EXPECT_THAT(values.lines(), testing::Each(SizeIs(LastValues::longestLine)));
}

TEST_F(LastValuesTest, AreTheLatestOneWhereThatIsLargerThanAllMayBe)
{
    add("small");
    add(std::string(LastValues::mostPayloadBytes + 1, 'x'));
    EXPECT_THAT(values.lines(), SizeIs(1));
    add(std::string(LastValues::mostPayloadBytes + 1, 'y'));
    EXPECT_THAT(values.lines(), SizeIs(2)); // the first one is a line already
}

TEST_F(LastValuesTest, AreLinesOfWholeCharactersThatATerminalDoesNotObey)
{
    add("x" + std::string(1, '\x1b') + "[2J");
    std::string long_ = "a";
    while (long_.size() < 2 * LastValues::longestLine) {
        long_ += "é";
    }
    add(long_);
    const auto lines = values.lines();
    EXPECT_EQ(lines.at(0), "x\\u001b[2J");
    EXPECT_EQ(lines.at(1), long_.substr(0, LastValues::longestLine - 1));
    EXPECT_THAT(lines.at(1).size(), Le(LastValues::longestLine));
}

} // namespace

} // namespace ovra::plex::tool
