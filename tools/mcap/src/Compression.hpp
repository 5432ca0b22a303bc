// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <plex/mcap/Records.hpp>

#include <memory>
#include <optional>
#include <span>
#include <string_view>
#include <vector>

namespace ovra::plex::mcap
{

/// How the format calls it: "lz4", "zstd", or nothing.
std::string_view nameOf(Compression compression);

/// @returns nothing: it is none of these.
std::optional<Compression> compressionOf(std::string_view name);

/// Compresses one piece after another.
class Compressor
{
public:
    explicit Compressor(Compression compression);
    ~Compressor();

    /// @returns what is valid until the next call, or the bytes themselves.
    std::span<const std::uint8_t> compress(std::span<const std::uint8_t> bytes);

private:
    struct Context;
    const Compression compression_;
    std::unique_ptr<Context> context_;
    std::vector<std::uint8_t> compressed_;
};

/// @param size what it must have uncompressed; so much memory is taken.
/// @returns whether it has; else what is in uncompressed is of no use.
bool decompress(Compression compression, std::span<const std::uint8_t> bytes, std::uint64_t size,
                std::vector<std::uint8_t>& uncompressed);

} // namespace ovra::plex::mcap
