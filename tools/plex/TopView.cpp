// SPDX-License-Identifier: Apache-2.0
#include "TopView.hpp"

#include "Printable.hpp"
#include "Words.hpp"

#include <algorithm>
#include <array>
#include <cmath>
#include <functional>
#include <span>
#include <utility>

namespace ovra::plex::tool
{

namespace
{

using ftxui::Element;
using ftxui::Elements;

/// A column of the table: its head, its width, by which order it is sorted, and its cell.
struct Column {
    const char* head;
    int width;
    std::optional<TopOrder> order;
    std::string (*cell)(const TopTopic& topic);
};

std::string unlessUnmeasured(const TopTopic& topic, std::string cell)
{
    return topic.isMeasured ? std::move(cell) : "-";
}

const std::array<Column, 7>& columns()
{
    static const std::array<Column, 7> all{{
        {"VALUES/S", 10, TopOrder::Rate,
         [](const TopTopic& topic) {
             return unlessUnmeasured(topic, fixed(topic.rate, 1));
         }},
        {"BYTES/S", 11, TopOrder::Bytes,
         [](const TopTopic& topic) {
             return unlessUnmeasured(topic, inBytes(topic.bytes));
         }},
        {"WRITERS", 8, TopOrder::Writers,
         [](const TopTopic& topic) {
             return std::to_string(topic.writers);
         }},
        {"READERS", 8, TopOrder::Readers,
         [](const TopTopic& topic) {
             return std::to_string(topic.readers);
         }},
        {"LOST", 8, TopOrder::Lost,
         [](const TopTopic& topic) {
             return unlessUnmeasured(topic, std::to_string(topic.lost));
         }},
        {"REFUSED", 8, std::nullopt,
         [](const TopTopic& topic) {
             return std::to_string(topic.refusals.size());
         }},
        {"", static_cast<int>(topSeconds), std::nullopt,
         [](const TopTopic& topic) {
             return sparkline(topic.rates);
         }},
    }};
    return all;
}

Element cellOf(const std::string& text, int width)
{
    return ftxui::hbox({ftxui::filler(), ftxui::text(text), ftxui::text(" ")}) |
           ftxui::size(ftxui::WIDTH, ftxui::EQUAL, width + 1);
}

using Columns = std::span<const Column>;

/// The first columns: as many as leave some room for names.
Columns columnsWithin(int width)
{
    constexpr int narrowestName = 20;
    std::size_t count = 0;
    for (int taken = narrowestName; count < columns().size(); ++count) {
        taken += columns().at(count).width + 1;
        if (taken > width) {
            break;
        }
    }
    return Columns(columns()).first(count);
}

/// A row of the table. The name takes what room there is.
Element rowOf(Element name, Columns columns, const std::function<Element(const Column&)>& cell)
{
    Elements cells{std::move(name) | ftxui::xflex_grow | ftxui::xflex_shrink};
    for (const auto& column : columns) {
        cells.push_back(cell(column));
    }
    return ftxui::hbox(std::move(cells));
}

Element headOf(Columns columns, TopOrder order)
{
    const auto marked = [&](const char* text, std::optional<TopOrder> own) {
        auto element = ftxui::text(text);
        return own == order ? element | ftxui::underlined : element;
    };
    return rowOf(marked("TOPIC", TopOrder::Name), columns,
                 [&](const Column& column) {
                     return ftxui::hbox(
                                {ftxui::filler(), marked(column.head, column.order), ftxui::text(" ")}) |
                            ftxui::size(ftxui::WIDTH, ftxui::EQUAL, column.width + 1);
                 }) |
           ftxui::bold;
}

Element rowOf(const TopTopic& topic, Columns columns, bool isSelected)
{
    auto row = rowOf(ftxui::text(printable(topic.name)), columns,
                     [&](const Column& column) { return cellOf(column.cell(topic), column.width); });
    if (!topic.refusals.empty()) {
        row = row | ftxui::color(ftxui::Color::Red);
    }
    return isSelected ? row | ftxui::inverted | ftxui::focus : row;
}

Element title(const TopState& state)
{
    return ftxui::text("plex top, domain " + std::to_string(state.domain) + ": " +
                       counted(state.participants, "participant") + ", " +
                       counted(state.topics.size(), "topic"));
}

Elements refusalsOf(const TopTopic& topic)
{
    constexpr std::size_t most = 5;
    Elements lines;
    for (const auto& refusal : topic.refusals) {
        if (lines.size() == most) {
            lines.push_back(ftxui::text("…"));
            break;
        }
        lines.push_back(ftxui::paragraph(printable(refusal)) | ftxui::color(ftxui::Color::Red));
    }
    return lines;
}

Element table(const TopState& state, int width)
{
    const auto columns = columnsWithin(width);
    const auto selected = selectedTopic(state);
    Elements rows;
    for (std::size_t i = 0; i < state.topics.size(); ++i) {
        rows.push_back(rowOf(state.topics[i], columns, i == selected));
    }
    Elements parts{title(state), headOf(columns, state.order),
                   ftxui::vbox(std::move(rows)) | ftxui::yframe | ftxui::yflex};
    if (selected) {
        std::ranges::move(refusalsOf(state.topics[*selected]), std::back_inserter(parts));
    }
    parts.push_back(ftxui::text("sort: n name, v values, b bytes, w writers, r readers, l lost   "
                                "enter: values   q: quit") |
                    ftxui::dim);
    return ftxui::vbox(std::move(parts));
}

/// What is known of the open topic now.
std::string figuresOf(const TopState& state)
{
    const auto topic = std::ranges::find(state.topics, state.selected, &TopTopic::name);
    return topic == state.topics.end()
               ? "It has gone."
               : printable(topic->type) + ", " + fixed(topic->rate, 1) + " values/s, " +
                     inBytes(topic->bytes) + "/s, " + std::to_string(topic->lost) + " lost";
}

Element values(const TopState& state)
{
    Elements lines;
    for (const auto& value : state.values) {
        lines.push_back(ftxui::text(printable(value)));
    }
    if (!lines.empty()) {
        lines.back() = lines.back() | ftxui::focus;
    }
    Elements parts{ftxui::text(printable(state.selected)) | ftxui::bold, ftxui::text(figuresOf(state))};
    if (!state.remark.empty()) {
        parts.push_back(ftxui::paragraph(printable(state.remark)) | ftxui::color(ftxui::Color::Yellow));
    }
    parts.push_back(ftxui::vbox(std::move(lines)) | ftxui::yframe | ftxui::yflex);
    parts.push_back(ftxui::text("escape: back   q: quit") | ftxui::dim);
    return ftxui::vbox(std::move(parts));
}

/// What topics are sorted by, where it is a number.
double numberOf(const TopTopic& topic, TopOrder order)
{
    switch (order) {
    case TopOrder::Rate:
        return topic.rate;
    case TopOrder::Bytes:
        return topic.bytes;
    case TopOrder::Readers:
        return static_cast<double>(topic.readers);
    case TopOrder::Writers:
        return static_cast<double>(topic.writers);
    case TopOrder::Lost:
        return static_cast<double>(topic.lost);
    default:
        return 0.0;
    }
}

} // namespace

void sort(TopState& state)
{
    std::ranges::sort(state.topics, {}, [&](const TopTopic& topic) {
        return std::pair(-numberOf(topic, state.order), topic.name);
    });
}

std::optional<std::size_t> selectedTopic(const TopState& state)
{
    if (state.topics.empty()) {
        return std::nullopt;
    }
    const auto found = std::ranges::find(state.topics, state.selected, &TopTopic::name);
    return found == state.topics.end() ? 0 : static_cast<std::size_t>(found - state.topics.begin());
}

void moveSelection(TopState& state, int places)
{
    if (const auto selected = selectedTopic(state)) {
        const auto last = static_cast<std::ptrdiff_t>(state.topics.size()) - 1;
        const auto place =
            std::clamp<std::ptrdiff_t>(static_cast<std::ptrdiff_t>(*selected) + places, 0, last);
        state.selected = state.topics[static_cast<std::size_t>(place)].name;
    }
}

std::string sparkline(const std::vector<double>& numbers)
{
    constexpr std::array<const char*, 8> bars{"▁", "▂", "▃", "▄", "▅", "▆", "▇", "█"};
    const double greatest = numbers.empty() ? 0.0 : *std::ranges::max_element(numbers);
    std::string text;
    for (const double number : numbers) {
        const double height = greatest > 0.0 ? std::ceil(number / greatest * 8.0) - 1.0 : 0.0;
        text += bars.at(static_cast<std::size_t>(std::clamp(height, 0.0, 7.0)));
    }
    return text;
}

Element draw(const TopState& state, int width)
{
    return state.isOpen ? values(state) : table(state, width);
}

} // namespace ovra::plex::tool
