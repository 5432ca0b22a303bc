// SPDX-License-Identifier: Apache-2.0
// What literals mean.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace ovra::plex::idl
{

/// A decimal, octal (0…) or hexadecimal (0x…) number; nothing where it is none or takes more than 64 bits.
std::optional<std::uint64_t> integerOf(std::string_view text);

/// A number with a point or an exponent; nothing where it is too large.
std::optional<double> floatingOf(std::string_view text);

/// What stands between the quotation marks of a literal, or why it can not be read.
struct Unquoted {
    std::string text; ///< UTF-8; in a narrow literal octal and hexadecimal escapes are bytes
    const char* fault = nullptr;
};

/// @param literal with its quotation marks, and with L where it is wide.
Unquoted unquoted(std::string_view literal);

} // namespace ovra::plex::idl
