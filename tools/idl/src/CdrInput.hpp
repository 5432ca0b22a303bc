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

namespace ovra::plex::idl
{

/// Numbers and bytes of a payload, from its first byte behind the header on. Nothing is read beyond its end,
/// nor beyond that of the part that is read.
class CdrInput
{
public:
    /// @param bytes the payload with its header. @param padding so many bytes at its end are none of the
    /// value.
    CdrInput(const CodecPath& path, std::span<const std::uint8_t> bytes, std::size_t padding)
        : path_(path)
        , bytes_(bytes)
        , end_(bytes.size() - padding)
    {
    }

    void configure(std::endian order, std::size_t highestAlignment)
    {
        order_ = order;
        highestAlignment_ = highestAlignment;
    }

    std::size_t position() const { return position_; }

    std::size_t end() const { return end_; }

    std::size_t remaining() const { return end_ - position_; }

    /// Alignment counts from here.
    void beginAlignment() { origin_ = position_; }

    void align(std::size_t alignment);

    /// Goes back to a position that was there before.
    void rewind(std::size_t position) { position_ = position; }

    void skip(std::size_t count) { position_ += count; }

    /// @returns the former end.
    std::size_t setEnd(std::size_t end) { return std::exchange(end_, end); }

    template <class Number>
    Number number();

    std::span<const std::uint8_t> octets(std::size_t count);

    [[noreturn]] void fail(const std::string& text) const { path_.fail(text, position_); }

private:
    void need(std::size_t count) const;

    const CodecPath& path_;
    std::span<const std::uint8_t> bytes_;
    std::size_t position_ = 4;
    std::size_t origin_ = 4;
    std::size_t end_;
    std::size_t highestAlignment_ = 8;
    std::endian order_ = std::endian::native;
};

template <class Number>
Number CdrInput::number()
{
    align(sizeof(Number));
    const auto source = octets(sizeof(Number));
    std::array<std::uint8_t, sizeof(Number)> raw{};
    std::ranges::copy(source, raw.begin());
    if (order_ != std::endian::native) {
        std::ranges::reverse(raw);
    }
    return std::bit_cast<Number>(raw);
}

} // namespace ovra::plex::idl
