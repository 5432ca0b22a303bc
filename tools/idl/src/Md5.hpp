// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <array>
#include <cstdint>
#include <string_view>

namespace ovra::plex::idl
{

/// The digest of a text (RFC 1321). It tells names apart, and is no protection.
std::array<std::uint8_t, 16> md5(std::string_view text);

} // namespace ovra::plex::idl
