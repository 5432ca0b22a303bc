// SPDX-License-Identifier: Apache-2.0
#include "Text.hpp"

#include <algorithm>
#include <array>

namespace ovra::plex::idl
{

namespace
{

constexpr std::string_view space = " \t\r\n\v\f";

/// How many bytes a character takes that begins with this one; 0 where none does.
std::size_t sizeBehind(unsigned char first)
{
    if (first < 0x80) {
        return 1;
    }
    if (first >= 0xC2 && first < 0xE0) {
        return 2;
    }
    if (first >= 0xE0 && first < 0xF0) {
        return 3;
    }
    return first >= 0xF0 && first < 0xF5 ? 4 : 0;
}

char32_t bitsOf(char byte, unsigned mask)
{
    return static_cast<unsigned char>(byte) & mask;
}

/// The character that bytes stand for, whether it may be written in so many or not.
char32_t characterOf(std::string_view bytes)
{
    if (bytes.size() == 1) {
        return bitsOf(bytes[0], 0xFF);
    }
    char32_t character = bitsOf(bytes[0], 0x7FU >> bytes.size());
    for (const char c : bytes.substr(1)) {
        character = character << 6U | bitsOf(c, 0x3F);
    }
    return character;
}

/// Whether a character takes so many bytes; half of a surrogate pair takes none.
bool takes(char32_t character, std::size_t size)
{
    constexpr std::array<char32_t, 5> ends{0, 0x80, 0x800, 0x10000, 0x110000};
    const bool isSurrogate = character >= 0xD800 && character <= 0xDFFF;
    return character >= ends.at(size - 1) && character < ends.at(size) && !isSurrogate;
}

} // namespace

std::string lowerCase(std::string_view text)
{
    std::string result(text);
    std::ranges::transform(result, result.begin(), [](char c) { return lowerCase(c); });
    return result;
}

std::size_t characterSize(std::string_view text)
{
    const std::size_t size = text.empty() ? 0 : sizeBehind(static_cast<unsigned char>(text[0]));
    const bool isWellFormed =
        size > 0 && size <= text.size() && std::ranges::all_of(text.substr(1, size - 1), isContinuation);
    return isWellFormed && takes(characterOf(text.substr(0, size)), size) ? size : 0;
}

char32_t firstCharacter(std::string_view text)
{
    return characterOf(text.substr(0, std::max<std::size_t>(characterSize(text), 1)));
}

void append(std::string& text, char32_t character)
{
    if (character < 0x80) {
        text += static_cast<char>(character);
        return;
    }
    unsigned following = character < 0x800 ? 1 : 2;
    following += character < 0x10000 ? 0 : 1;
    const unsigned mark = (0xFF00U >> (following + 1)) & 0xFFU;
    text += static_cast<char>(mark | character >> 6U * following);
    while (following-- > 0) {
        text += static_cast<char>(0x80U | (character >> 6U * following & 0x3FU));
    }
}

std::uint32_t characterCount(std::string_view text)
{
    return static_cast<std::uint32_t>(std::ranges::count_if(text, [](char c) { return !isContinuation(c); }));
}

std::string_view trimmed(std::string_view text)
{
    text.remove_prefix(std::min(text.find_first_not_of(space), text.size()));
    return text.substr(0, text.find_last_not_of(space) + 1);
}

} // namespace ovra::plex::idl
