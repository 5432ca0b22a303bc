// SPDX-License-Identifier: Apache-2.0
// What `plex top` shows, as a function of what is known: the screen of a terminal stays outside.
#pragma once

#include <cstddef>
#include <cstdint>
#include <ftxui/dom/elements.hpp>
#include <optional>
#include <string>
#include <vector>

namespace ovra::plex::tool
{

/// A topic, and what came of it lately.
struct TopTopic {
    std::string name;
    std::string type;
    std::size_t writers = 0;
    std::size_t readers = 0;
    double rate = 0.0;                 ///< values a second
    double bytes = 0.0;                ///< bytes a second
    std::uint64_t lost = 0;            ///< values, since it is watched
    std::vector<double> rates;         ///< of the last seconds, the latest at the end
    std::vector<std::string> refusals; ///< of each pair that is not matched, in words
    bool isMeasured = true;            ///< else too many topics are
};

enum class TopOrder { Name, Rate, Bytes, Readers, Writers, Lost };

struct TopState {
    std::uint32_t domain = 0;
    std::size_t participants = 0;
    std::vector<TopTopic> topics;
    TopOrder order = TopOrder::Name;
    std::string selected;            ///< a topic's name; it may be gone
    bool isOpen = false;             ///< shows the selected topic's values
    std::vector<std::string> values; ///< of the open topic, one a line, the latest at the end
    std::string remark;              ///< on these values: why there are only bytes
};

/// How many seconds of rates are drawn.
inline constexpr std::size_t topSeconds = 30;

/// Puts topics into their order: names from a to z, numbers from the greatest on.
void sort(TopState& state);

/// The place of the selected topic. @returns nothing: there are no topics; the first where it is gone.
std::optional<std::size_t> selectedTopic(const TopState& state);

/// Selects the topic that is so many places further down, and stops at the ends.
void moveSelection(TopState& state, int places);

/// Numbers as bars of eight heights, relative to the greatest.
std::string sparkline(const std::vector<double>& numbers);

/// @param width of the terminal, in characters: of the table's columns there are as many as have room.
ftxui::Element draw(const TopState& state, int width);

} // namespace ovra::plex::tool
