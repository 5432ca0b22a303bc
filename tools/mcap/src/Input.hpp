// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "Format.hpp"

#include <plex/mcap/Records.hpp>

#include <concepts>
#include <cstdint>
#include <map>
#include <optional>
#include <span>
#include <string>

namespace ovra::plex::mcap
{

/// Bytes that are read one thing after another. Nothing is read beyond their end.
class Input
{
public:
    /// @param offset of the bytes in the file, for errors.
    Input(std::span<const std::uint8_t> bytes, std::uint64_t offset) : bytes_(bytes), offset_(offset) {}

    /// The uncompressed records of a chunk, all of whose errors are at the chunk.
    static Input ofChunk(std::span<const std::uint8_t> bytes, std::uint64_t chunk);

    std::uint64_t left() const { return bytes_.size() - position_; }

    std::uint64_t position() const { return position_; }

    /// Of what comes next, in the file.
    std::uint64_t offset() const { return isChunk_ ? offset_ : offset_ + position_; }

    /// @throws FormatError where that much is not there.
    std::span<const std::uint8_t> bytes(std::uint64_t size);

    template <std::unsigned_integral Number>
    Number number()
    {
        Number number = 0;
        const auto read = bytes(sizeof number);
        for (std::size_t i = 0; i < sizeof number; ++i) {
            number = static_cast<Number>(number | static_cast<Number>(read[i]) << (8U * i));
        }
        return number;
    }

    std::string text();

    /// The next bytes, apart. @throws FormatError where that much is not there.
    Input part(std::uint64_t size);

    /// What stands behind its size of 32 bits.
    Input list() { return part(number<std::uint32_t>()); }

    std::map<std::string, std::string> texts();
    std::map<std::uint16_t, std::uint64_t> numbers();

    [[noreturn]] void fail(const std::string& what) const;

private:
    std::span<const std::uint8_t> bytes_;
    std::uint64_t offset_;
    std::uint64_t position_ = 0;
    bool isChunk_ = false;
};

/// A record, of which the content is there.
struct Record {
    Opcode opcode;
    Input content;
};

/// The next record. @returns nothing: there are no more. @throws FormatError where it is not all there.
std::optional<Record> nextRecord(Input& input);

} // namespace ovra::plex::mcap
