// SPDX-License-Identifier: Apache-2.0
// Numbers and names as people read them.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace ovra::plex::tool
{

/// A time span in a fitting unit, with three digits: "1.25 ms". @param seconds may be negative.
std::string inSeconds(double seconds);

/// An amount in a fitting unit, with three digits: "1.25 MB".
std::string inBytes(double bytes);

/// A number with as many digits behind the point.
std::string fixed(double number, int digits);

/// "1 value", "2 values". @param noun in the singular.
std::string counted(std::uint64_t number, std::string_view noun);

/// Words in a row, with a separator between each two.
std::string joined(const std::vector<std::string>& words, std::string_view separator);

/// Two hexadecimal digits a byte.
std::string inHexadecimal(std::span<const std::uint8_t> bytes);

/// A moment as UTC, "2026-11-23T08:00:00.123456789Z". @param nanoseconds since 1970.
std::string inTimeOfDay(std::int64_t nanoseconds);

/// Of some names that which is written most like another one. @returns empty: none is like it.
std::string nearest(std::string_view name, const std::vector<std::string>& names);

/// ", did you mean …?" for the nearest name, printable(), or nothing.
std::string suggestion(std::string_view name, const std::vector<std::string>& names);

/// A text with blanks behind it, so many characters of UTF-8 wide at least.
std::string padded(std::string text, std::size_t width);

/// Rows of cells, printable(), each column as wide as its widest cell, with two blanks in between.
std::vector<std::string> aligned(std::vector<std::vector<std::string>> rows);

} // namespace ovra::plex::tool
