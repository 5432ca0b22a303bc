// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>
#include <string_view>

namespace ovra::plex::idl
{

/// A number that changes with a text (FNV-1a).
constexpr std::uint64_t hashOf(std::string_view text)
{
    constexpr std::uint64_t prime = 0x100000001B3;
    std::uint64_t hash = 0xCBF29CE484222325;
    for (const char c : text) {
        hash = (hash ^ static_cast<unsigned char>(c)) * prime;
    }
    return hash;
}

} // namespace ovra::plex::idl
