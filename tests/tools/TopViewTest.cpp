// SPDX-License-Identifier: Apache-2.0
#include "../../tools/plex/TopView.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <ftxui/screen/screen.hpp>
#include <sstream>

namespace plex::test
{

using namespace ovra::plex::tool;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

/// Two topics, of which one has a refused pair.
class TopView : public testing::Test
{
protected:
    TopView()
    {
        state.domain = 7;
        state.participants = 2;
        state.topics.push_back({"dome/position", "AltAz", 1, 2, 100.0, 2000.0, 3, {0, 50, 100}, {}, true});
        state.topics.push_back(
            {"dome/temperature", "Temperature", 1, 1, 5.0, 100.0, 0, {}, {"a 1 → b 2: reliability"}, true});
    }

    /// The lines that are drawn, without blanks at their ends.
    std::vector<std::string> lines(int width = 130)
    {
        auto screen = drawn(width);
        std::vector<std::string> result;
        for (int y = 0; y < screen.dimy(); ++y) {
            std::string line;
            for (int x = 0; x < screen.dimx(); ++x) {
                line += screen.PixelAt(x, y).character;
            }
            line.erase(line.find_last_not_of(' ') + 1);
            result.push_back(line);
        }
        return result;
    }

    ftxui::Screen drawn(int width = 130)
    {
        auto screen = ftxui::Screen::Create(ftxui::Dimension::Fixed(width), ftxui::Dimension::Fixed(8));
        ftxui::Render(screen, draw(state, width));
        return screen;
    }

    std::vector<std::string> names() const
    {
        std::vector<std::string> result;
        for (const auto& topic : state.topics) {
            result.push_back(topic.name);
        }
        return result;
    }

    TopState state;
};

TEST_F(TopView, HasALineForEachTopic)
{
    EXPECT_THAT(lines(),
                ElementsAre("plex top, domain 7: 2 participants, 2 topics",
                            "TOPIC                                     VALUES/S"
                            "     BYTES/S  WRITERS  READERS     LOST  REFUSED",
                            "dome/position                                100.0"
                            "        2 kB        1        2        3        0                            ▁▄█",
                            "dome/temperature                               5.0"
                            "       100 B        1        1        0        1",
                            "", "", "", HasSubstr("sort: n name")));
}

TEST_F(TopView, ShowsRefusedPairsInRed)
{
    const auto isRed = [](const ftxui::Screen& screen, int y) {
        return const_cast<ftxui::Screen&>(screen).PixelAt(0, y).foreground_color == ftxui::Color::Red;
    };
    auto screen = drawn();
    EXPECT_FALSE(isRed(screen, 2));
    EXPECT_TRUE(isRed(screen, 3));
    state.selected = "dome/temperature";
    screen = drawn();
    EXPECT_TRUE(isRed(screen, 6));
    EXPECT_EQ(lines().at(6), "a 1 → b 2: reliability");
}

TEST_F(TopView, SortsByNameOrTheGreatestNumber)
{
    state.order = TopOrder::Name;
    sort(state);
    EXPECT_THAT(names(), ElementsAre("dome/position", "dome/temperature"));
    state.topics[1].bytes = 9000.0;
    state.topics[1].writers = 9;
    for (const auto order : {TopOrder::Rate, TopOrder::Readers, TopOrder::Lost}) {
        state.order = order;
        sort(state);
        EXPECT_THAT(names(), ElementsAre("dome/position", "dome/temperature"));
    }
    for (const auto order : {TopOrder::Bytes, TopOrder::Writers}) {
        state.order = order;
        sort(state);
        EXPECT_THAT(names(), ElementsAre("dome/temperature", "dome/position"));
        state.order = TopOrder::Name;
        sort(state);
    }
}

TEST_F(TopView, SelectsNoFurtherThanTheEnds)
{
    EXPECT_EQ(selectedTopic(state), 0U);
    moveSelection(state, 1);
    EXPECT_EQ(state.selected, "dome/temperature");
    moveSelection(state, 1);
    EXPECT_EQ(selectedTopic(state), 1U);
    moveSelection(state, -5);
    EXPECT_EQ(selectedTopic(state), 0U);
    state.selected = "gone";
    EXPECT_EQ(selectedTopic(state), 0U);
    state.topics.clear();
    moveSelection(state, 1);
    EXPECT_EQ(selectedTopic(state), std::nullopt);
}

TEST_F(TopView, ShowsTheLatestValuesOfTheOpenTopic)
{
    state.isOpen = true;
    state.selected = "dome/position";
    for (int i = 0; i < 20; ++i) {
        state.values.push_back("alt=" + std::to_string(i));
    }
    EXPECT_THAT(lines(), ElementsAre("dome/position", "AltAz, 100.0 values/s, 2 kB/s, 3 lost", "alt=15",
                                     "alt=16", "alt=17", "alt=18", "alt=19", "escape: back   q: quit"));
    state.remark = "type unknown";
    EXPECT_EQ(lines().at(2), "type unknown");
}

TEST_F(TopView, LeavesOutColumnsThatHaveNoRoom)
{
    EXPECT_EQ(lines(80).at(1),
              "TOPIC                  VALUES/S     BYTES/S  WRITERS  READERS     LOST  REFUSED");
    EXPECT_EQ(lines(80).at(3),
              "dome/temperature            5.0       100 B        1        1        0        1");
    EXPECT_EQ(lines(40).at(3), "dome/temperature                    5.0");
    EXPECT_EQ(lines(20).at(3), "dome/temperature");
    EXPECT_EQ(lines(4).at(3), "dome");
}

TEST_F(TopView, SaysThatTheOpenTopicHasGone)
{
    state.isOpen = true;
    state.selected = "dome/shutters";
    state.values = {"name=upper"};
    EXPECT_THAT(lines(), ElementsAre("dome/shutters", "It has gone.", "name=upper", "", "", "", "",
                                     "escape: back   q: quit"));
}

TEST_F(TopView, ShowsNamesAndDoesNotObeyThem)
{
    const std::string hostile = "\x1b]0;x\x07\xc2\x9b\xff\n";
    const std::string shown = "\\u001b]0;x\\u0007\\u009b\\xff\\n";
    state.topics = {{hostile, hostile, 1, 2, 100.0, 2000.0, 3, {}, {hostile}, true}};
    EXPECT_THAT(lines().at(2), StartsWith(shown));
    EXPECT_EQ(lines().at(6), shown);
    state.isOpen = true;
    state.selected = hostile;
    state.values = {hostile};
    state.remark = hostile;
    EXPECT_THAT(lines(), ElementsAre(shown, StartsWith(shown), shown, shown, "", "", "", HasSubstr("back")));
}

TEST_F(TopView, LeavesOutWhatIsNotMeasured)
{
    state.topics[0].isMeasured = false;
    EXPECT_THAT(lines().at(2), Not(HasSubstr("100.0")));
}

TEST(Sparkline, IsRelativeToTheGreatest)
{
    EXPECT_EQ(sparkline({}), "");
    EXPECT_EQ(sparkline({0, 0}), "▁▁");
    EXPECT_EQ(sparkline({1, 2, 4, 8}), "▁▂▄█");
}

} // namespace plex::test
