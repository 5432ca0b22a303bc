// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <array>
#include <cstdint>
#include <span>

namespace ovra::plex::mcap
{

/// The checksum CRC-32 (ISO 3309), of bytes that come piece by piece.
class Crc32
{
public:
    void add(std::span<const std::uint8_t> bytes);

    std::uint32_t value() const { return ~state_; }

private:
    std::uint32_t state_ = ~std::uint32_t{0};
};

std::uint32_t crc32(std::span<const std::uint8_t> bytes);

} // namespace ovra::plex::mcap
