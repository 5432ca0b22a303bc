// SPDX-License-Identifier: Apache-2.0
#include "LastValues.hpp"

#include "Printable.hpp"

#include <algorithm>
#include <iterator>
#include <numeric>
#include <utility>

namespace ovra::plex::tool
{

namespace
{

/// The beginning of a text, without a piece of a character at its end.
std::string beginningOf(const std::string& text, std::size_t most)
{
    auto end = most;
    while (end < text.size() && end > 0 && (static_cast<unsigned char>(text[end]) & 0xC0U) == 0x80U) {
        --end;
    }
    return text.substr(0, end);
}

} // namespace

std::size_t LastValues::sizeOf(const Value& value)
{
    return value.payload ? value.payload->size() : 0;
}

void LastValues::remove(const std::deque<Value>::iterator& value)
{
    payloadBytes_ -= sizeOf(*value);
    values_.erase(value);
}

LastValues::LastValues(std::function<std::string(const Payload&)> inWords) : inWords_(std::move(inWords)) {}

void LastValues::add(const Payload& payload)
{
    values_.push_back({payload, {}});
    payloadBytes_ += payload.size();
    if (values_.size() > mostValues) {
        remove(values_.begin());
    }
    while (payloadBytes_ > mostPayloadBytes) {
        const auto first = std::ranges::find_if(values_, [](const Value& value) { return !!value.payload; });
        if (std::next(first) == values_.end()) {
            return;
        }
        remove(first);
    }
}

std::vector<std::string> LastValues::lines()
{
    std::vector<std::string> lines;
    lines.reserve(values_.size());
    for (auto& value : values_) {
        if (value.payload) {
            value.line = beginningOf(printable(inWords_(*value.payload)), longestLine);
            payloadBytes_ -= sizeOf(value);
            value.payload.reset();
        }
        lines.push_back(value.line);
    }
    return lines;
}

std::size_t LastValues::bytes() const
{
    return std::accumulate(
        values_.begin(), values_.end(), std::size_t{0},
        [](std::size_t sum, const Value& value) { return sum + sizeOf(value) + value.line.size(); });
}

} // namespace ovra::plex::tool
