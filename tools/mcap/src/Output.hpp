// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "Format.hpp"

#include <array>
#include <concepts>
#include <cstdint>
#include <map>
#include <span>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace ovra::plex::mcap
{

/// Records as bytes. Numbers are little-endian.
class Output
{
public:
    const std::vector<std::uint8_t>& bytes() const { return bytes_; }

    std::size_t size() const { return bytes_.size(); }

    void clear() { bytes_.clear(); }

    template <std::unsigned_integral Number>
    void put(Number number)
    {
        std::array<std::uint8_t, sizeof number> bytes{};
        for (std::size_t i = 0; i < sizeof number; ++i) {
            bytes[i] = static_cast<std::uint8_t>(number >> (8U * i));
        }
        put(std::span<const std::uint8_t>(bytes));
    }

    void put(std::span<const std::uint8_t> bytes) { bytes_.insert(bytes_.end(), bytes.begin(), bytes.end()); }

    void put(std::string_view text)
    {
        if (text.size() > UINT32_MAX) {
            throw std::length_error("a text of 4 GB or more does not fit a record");
        }
        put(static_cast<std::uint32_t>(text.size()));
        bytes_.insert(bytes_.end(), text.begin(), text.end());
    }

    template <class Key, class Value>
    void put(const std::map<Key, Value>& map)
    {
        const auto begin = size();
        put(std::uint32_t{0});
        for (const auto& [key, value] : map) {
            put(key);
            put(value);
        }
        replace(begin, static_cast<std::uint32_t>(size() - begin - sizeof(std::uint32_t)));
    }

    /// Puts a record whose content is what put() puts.
    template <class Put>
    void record(Opcode opcode, Put putContent)
    {
        put(static_cast<std::uint8_t>(opcode));
        const auto begin = size();
        put(std::uint64_t{0});
        putContent();
        replace(begin, static_cast<std::uint64_t>(size() - begin - sizeof(std::uint64_t)));
    }

private:
    template <std::unsigned_integral Number>
    void replace(std::size_t at, Number number)
    {
        for (std::size_t i = 0; i < sizeof number; ++i) {
            bytes_[at + i] = static_cast<std::uint8_t>(number >> (8U * i));
        }
    }

    std::vector<std::uint8_t> bytes_;
};

} // namespace ovra::plex::mcap
