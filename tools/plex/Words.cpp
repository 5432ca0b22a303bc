// SPDX-License-Identifier: Apache-2.0
#include "Words.hpp"

#include "Printable.hpp"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>
#include <ctime>
#include <numeric>

namespace ovra::plex::tool
{

namespace
{

struct Unit {
    double size;
    const char* name;
};

/// A number in the largest of some units that leaves a digit in front of the point; units come largest first.
template <std::size_t Count>
std::string inUnits(double number, const std::array<Unit, Count>& units)
{
    const auto* const unit =
        std::ranges::find_if(units, [&](const Unit& each) { return std::abs(number) >= each.size; });
    const Unit& chosen = unit == units.end() ? units.back() : *unit;
    std::array<char, 64> text{};
    const auto length = std::snprintf(text.data(), text.size(), "%.3g %s", number / chosen.size, chosen.name);
    return {text.data(), static_cast<std::size_t>(length)};
}

/// How many characters must be put in, left out or replaced to make one name of the other.
std::size_t distanceBetween(std::string_view one, std::string_view other)
{
    std::vector<std::size_t> row(other.size() + 1);
    std::iota(row.begin(), row.end(), std::size_t{0});
    for (const char c : one) {
        std::size_t diagonal = row[0]++;
        for (std::size_t j = 0; j < other.size(); ++j) {
            const std::size_t replaced = diagonal + (c == other[j] ? 0 : 1);
            diagonal = row[j + 1];
            row[j + 1] = std::min({replaced, row[j] + 1, diagonal + 1});
        }
    }
    return row.at(other.size());
}

/// Characters of a text of UTF-8.
std::size_t widthOf(std::string_view text)
{
    const auto isFirst = [](char c) {
        return (static_cast<unsigned char>(c) & 0xC0U) != 0x80U;
    };
    return static_cast<std::size_t>(std::ranges::count_if(text, isFirst));
}

} // namespace

std::string inSeconds(double seconds)
{
    constexpr std::array units{Unit{1.0, "s"}, Unit{1e-3, "ms"}, Unit{1e-6, "µs"}, Unit{1e-9, "ns"}};
    return seconds == 0.0 ? "0 s" : inUnits(seconds, units);
}

std::string inBytes(double bytes)
{
    constexpr std::array units{Unit{1e9, "GB"}, Unit{1e6, "MB"}, Unit{1e3, "kB"}, Unit{1.0, "B"}};
    return inUnits(bytes, units);
}

std::string fixed(double number, int digits)
{
    std::array<char, 64> text{};
    const auto length = std::snprintf(text.data(), text.size(), "%.*f", digits, number);
    return {text.data(), static_cast<std::size_t>(length)};
}

std::string counted(std::uint64_t number, std::string_view noun)
{
    return std::to_string(number) + " " + std::string(noun) + (number == 1 ? "" : "s");
}

std::string joined(const std::vector<std::string>& words, std::string_view separator)
{
    std::string text;
    for (const auto& word : words) {
        text += text.empty() ? "" : separator;
        text += word;
    }
    return text;
}

std::string inHexadecimal(std::span<const std::uint8_t> bytes)
{
    constexpr std::string_view digits = "0123456789abcdef";
    std::string text;
    text.reserve(2 * bytes.size());
    for (const auto byte : bytes) {
        text += digits[byte >> 4U];
        text += digits[byte & 0x0FU];
    }
    return text;
}

std::string inTimeOfDay(std::int64_t nanoseconds)
{
    constexpr std::int64_t second = 1'000'000'000;
    const std::time_t seconds = (nanoseconds - (((nanoseconds % second) + second) % second)) / second;
    std::tm parts{};
    gmtime_r(&seconds, &parts);
    std::array<char, 64> text{};
    auto length = std::strftime(text.data(), text.size(), "%Y-%m-%dT%H:%M:%S", &parts);
    length += static_cast<std::size_t>(std::snprintf(text.data() + length, text.size() - length, ".%09dZ",
                                                     static_cast<int>(nanoseconds - (seconds * second))));
    return {text.data(), length};
}

std::string nearest(std::string_view name, const std::vector<std::string>& names)
{
    const std::string* best = nullptr;
    std::size_t least = std::max<std::size_t>(2, name.size() / 2); // else they have little in common
    for (const auto& each : names) {
        const bool contains = !name.empty() && each.find(name) != std::string::npos;
        const std::size_t distance = contains ? 1 : distanceBetween(name, each);
        if (distance < least || (distance == least && best == nullptr)) {
            best = &each;
            least = distance;
        }
    }
    return best == nullptr ? "" : *best;
}

std::string suggestion(std::string_view name, const std::vector<std::string>& names)
{
    const std::string found = nearest(name, names);
    return found.empty() ? "" : ", did you mean \"" + printable(found) + "\"?";
}

std::string padded(std::string text, std::size_t width)
{
    const std::size_t own = widthOf(text);
    text.append(width > own ? width - own : 0, ' ');
    return text;
}

std::vector<std::string> aligned(std::vector<std::vector<std::string>> rows)
{
    std::vector<std::size_t> widths;
    for (auto& row : rows) {
        widths.resize(std::max(widths.size(), row.size()));
        for (std::size_t i = 0; i < row.size(); ++i) {
            row[i] = printable(row[i]);
            widths[i] = std::max(widths[i], widthOf(row[i]));
        }
    }
    std::vector<std::string> lines;
    for (const auto& row : rows) {
        std::string line;
        for (std::size_t i = 0; i < row.size(); ++i) {
            line += i + 1 < row.size() ? padded(row[i], widths[i] + 2) : row[i];
        }
        lines.push_back(std::move(line));
    }
    return lines;
}

} // namespace ovra::plex::tool
