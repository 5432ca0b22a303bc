// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "RawReader.hpp"

#include <algorithm>
#include <cstdint>
#include <map>

namespace ovra::plex::tool
{

/// Counts what is missing between the first and the last sample of each writer, by their numbers. Samples may
/// come in any order.
class Losses
{
public:
    void add(const Received& received)
    {
        auto [entry, isNew] =
            writers_.try_emplace(received.writer, Numbers{received.sequence, received.sequence, 0});
        auto& numbers = entry->second;
        numbers.first = std::min(numbers.first, received.sequence);
        numbers.last = std::max(numbers.last, received.sequence);
        ++numbers.count;
    }

    std::uint64_t lost() const
    {
        std::uint64_t lost = 0;
        for (const auto& [guid, numbers] : writers_) {
            const auto sent = numbers.last - numbers.first + 1;
            lost += sent - std::min(sent, numbers.count);
        }
        return lost;
    }

    std::size_t writers() const { return writers_.size(); }

private:
    struct Numbers {
        std::uint64_t first;
        std::uint64_t last;
        std::uint64_t count;
    };

    std::map<fastdds::Guid, Numbers> writers_;
};

} // namespace ovra::plex::tool
