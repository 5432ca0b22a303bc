// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>
#include <string_view>

namespace ovra::plex::idl
{

/// The highest id that a member can have.
inline constexpr std::uint32_t HighestMemberId = 0x0FFFFFFF;

/// The id that a name stands for: the first four bytes of its MD5, the lowest first, cut to 28 bits.
std::uint32_t hashedMemberId(std::string_view name);

} // namespace ovra::plex::idl
