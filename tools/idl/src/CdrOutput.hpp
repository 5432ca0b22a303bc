// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "CodecPath.hpp"

#include <algorithm>
#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <utility>
#include <vector>

namespace ovra::plex::idl
{

/// Numbers and bytes put one behind the other, aligned.
class CdrOutput
{
public:
    /// @param origin where the bytes begin that alignment counts: behind the header.
    CdrOutput(const CodecPath& path, std::endian order, std::size_t highestAlignment, std::size_t origin)
        : path_(path)
        , bytes_(origin)
        , origin_(origin)
        , highestAlignment_(highestAlignment)
        , order_(order)
    {
    }

    std::size_t position() const { return bytes_.size(); }

    /// Alignment counts from here.
    void beginAlignment() { origin_ = bytes_.size(); }

    void align(std::size_t alignment);

    template <class Number>
    void number(Number number);

    /// Writes a number over what stands at a position.
    template <class Number>
    void overwrite(std::size_t position, Number number);

    void octets(std::span<const std::uint8_t> octets);

    /// Makes room for that many bytes at a position; what stands there moves on, and the place that alignment
    /// counts from with it.
    void insert(std::size_t position, std::size_t count);

    [[noreturn]] void fail(const std::string& text) const { path_.fail(text); }

    std::vector<std::uint8_t> take() { return std::move(bytes_); }

private:
    void need(std::size_t count) const;

    template <class Number>
    std::array<std::uint8_t, sizeof(Number)> rawOf(Number number) const;

    const CodecPath& path_;
    std::vector<std::uint8_t> bytes_;
    std::size_t origin_;
    std::size_t highestAlignment_;
    std::endian order_;
};

template <class Number>
std::array<std::uint8_t, sizeof(Number)> CdrOutput::rawOf(Number number) const
{
    auto raw = std::bit_cast<std::array<std::uint8_t, sizeof(Number)>>(number);
    if (order_ != std::endian::native) {
        std::ranges::reverse(raw);
    }
    return raw;
}

template <class Number>
void CdrOutput::number(Number number)
{
    align(sizeof(Number));
    octets(rawOf(number));
}

template <class Number>
void CdrOutput::overwrite(std::size_t position, Number number)
{
    std::ranges::copy(rawOf(number), bytes_.begin() + static_cast<std::ptrdiff_t>(position));
}

} // namespace ovra::plex::idl
