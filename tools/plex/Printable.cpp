// SPDX-License-Identifier: Apache-2.0
#include "Printable.hpp"

#include <algorithm>
#include <array>
#include <cstddef>

namespace ovra::plex::tool
{

namespace
{

/// A character of UTF-8, and how many bytes it takes: 0 where there is none.
struct Character {
    char32_t code = 0;
    std::size_t size = 0;
};

std::size_t sizeBehind(unsigned char first)
{
    if (first < 0x80) {
        return 1;
    }
    if (first < 0xC0 || first >= 0xF8) {
        return 0;
    }
    if (first < 0xE0) {
        return 2;
    }
    return first < 0xF0 ? 3 : 4;
}

/// The character that a text begins with.
Character firstOf(std::string_view text)
{
    constexpr std::array<char32_t, 5> least{0, 0, 0x80, 0x800, 0x10000}; // that takes so many bytes
    const auto first = static_cast<unsigned char>(text.front());
    const auto size = sizeBehind(first);
    if (size == 0 || size > text.size()) {
        return {};
    }
    char32_t code = size == 1 ? first : first & (0x7FU >> size);
    for (const char c : text.substr(1, size - 1)) {
        const auto byte = static_cast<unsigned char>(c);
        if ((byte & 0xC0U) != 0x80U) {
            return {};
        }
        code = code << 6U | (byte & 0x3FU);
    }
    const bool isSurrogate = code >= 0xD800 && code <= 0xDFFF;
    return code < least.at(size) || code > 0x10FFFF || isSurrogate ? Character{} : Character{code, size};
}

bool isObeyed(char32_t code)
{
    const bool isControl = code < 0x20 || (code >= 0x7F && code <= 0x9F);
    const bool isDirection = (code >= 0x202A && code <= 0x202E) || (code >= 0x2066 && code <= 0x2069);
    return isControl || isDirection;
}

std::string escaped(std::string_view mark, unsigned number, int digits)
{
    std::string text(mark);
    while (digits-- > 0) {
        text += "0123456789abcdef"[number >> (4 * digits) & 0xFU];
    }
    return text;
}

bool isPlain(char c)
{
    return c >= ' ' && c < '\x7F';
}

} // namespace

std::string printable(std::string_view text, Layout layout)
{
    std::string result;
    result.reserve(text.size());
    while (!text.empty()) {
        const auto plain = static_cast<std::size_t>(std::ranges::find_if_not(text, isPlain) - text.begin());
        result += text.substr(0, plain);
        text.remove_prefix(plain);
        if (text.empty()) {
            break;
        }
        const auto [code, size] = firstOf(text);
        if (size == 0) {
            result += escaped("\\x", static_cast<unsigned char>(text.front()), 2);
        } else if (code == '\n' || code == '\t') {
            const char* const word = code == '\n' ? "\\n" : "\\t";
            result += layout == Layout::Kept ? text.substr(0, 1) : word;
        } else if (isObeyed(code)) {
            result += escaped("\\u", static_cast<unsigned>(code), 4);
        } else {
            result += text.substr(0, size);
        }
        text.remove_prefix(std::max<std::size_t>(size, 1));
    }
    return result;
}

} // namespace ovra::plex::tool
