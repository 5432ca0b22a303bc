// SPDX-License-Identifier: Apache-2.0
// The numbers of the format.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

namespace ovra::plex::mcap
{

inline constexpr std::array<std::uint8_t, 8> magic{0x89, 'M', 'C', 'A', 'P', '0', '\r', '\n'};

/// The kinds of records.
enum class Opcode : std::uint8_t {
    Header = 0x01,
    Footer = 0x02,
    Schema = 0x03,
    Channel = 0x04,
    Message = 0x05,
    Chunk = 0x06,
    MessageIndex = 0x07,
    ChunkIndex = 0x08,
    Attachment = 0x09,
    AttachmentIndex = 0x0A,
    Statistics = 0x0B,
    Metadata = 0x0C,
    MetadataIndex = 0x0D,
    SummaryOffset = 0x0E,
    DataEnd = 0x0F,
};

inline constexpr std::size_t prefixSize = 9; ///< of a record: opcode and length
inline constexpr std::size_t messageHeadSize = 22;
inline constexpr std::size_t footerSize = 20;

} // namespace ovra::plex::mcap
