// SPDX-License-Identifier: Apache-2.0
// Characters and their encoding.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace ovra::plex::idl
{

constexpr bool isDigit(char c)
{
    return c >= '0' && c <= '9';
}

constexpr bool isHexadecimal(char c)
{
    return isDigit(c) || (c >= 'a' && c <= 'f') || (c >= 'A' && c <= 'F');
}

constexpr bool isWordStart(char c)
{
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || c == '_';
}

constexpr bool isWordPart(char c)
{
    return isWordStart(c) || isDigit(c);
}

/// Whether a byte is part of a character that is not ASCII.
constexpr bool isForeign(char c)
{
    return static_cast<unsigned char>(c) >= 0x80;
}

constexpr char lowerCase(char c)
{
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

/// ASCII letters only: identifiers have no others.
std::string lowerCase(std::string_view text);

/// Whether a byte continues a character of UTF-8.
constexpr bool isContinuation(char c)
{
    return (static_cast<unsigned char>(c) & 0xC0U) == 0x80U;
}

/// How many bytes the first character of a text takes in UTF-8; 0 where they are not well-formed, or there is
/// none.
std::size_t characterSize(std::string_view text);

/// The first character of a text that is well-formed there.
char32_t firstCharacter(std::string_view text);

/// Appends a character in UTF-8.
void append(std::string& text, char32_t character);

/// How many characters a text has; stray bytes count by their beginnings.
std::uint32_t characterCount(std::string_view text);

/// Without blanks, tabulators and ends of line around it.
std::string_view trimmed(std::string_view text);

} // namespace ovra::plex::idl
