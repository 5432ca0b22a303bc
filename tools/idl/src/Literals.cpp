// SPDX-License-Identifier: Apache-2.0
#include "Literals.hpp"

#include "Text.hpp"

#include <charconv>
#include <cmath>

namespace ovra::plex::idl
{

namespace
{

constexpr std::string_view letters = "ntvbrfa\\?'\"";
constexpr std::string_view meanings = "\n\t\v\b\r\f\a\\?'\"";

bool isOctal(char c)
{
    return c >= '0' && c <= '7';
}

/// Takes digits from the front of a text. @returns what they mean; nothing where there are none.
std::optional<char32_t> takeNumber(std::string_view& text, bool (*isDigitOfBase)(char), int base,
                                   std::size_t most)
{
    std::size_t count = 0;
    while (count < most && count < text.size() && isDigitOfBase(text[count])) {
        ++count;
    }
    std::uint32_t value = 0;
    const char* const begin =
        text.data(); // NOLINT(bugprone-suspicious-stringview-data-usage): its end goes along
    const auto [end, error] = std::from_chars(begin, begin + count, value, base);
    if (error != std::errc()) {
        return std::nullopt;
    }
    text.remove_prefix(count);
    return value;
}

/// Takes the escape that a text begins with, behind its backslash. @returns what is wrong, or null.
const char* takeEscape(std::string_view& text, bool wide, std::string& result)
{
    const std::size_t simple = letters.find(text[0]);
    if (simple != std::string_view::npos) {
        result += meanings[simple];
        text.remove_prefix(1);
        return nullptr;
    }
    std::optional<char32_t> value;
    bool isByte = !wide;
    if (isOctal(text[0])) {
        value = takeNumber(text, isOctal, 8, 3);
    } else if (text[0] == 'x') {
        text.remove_prefix(1);
        value = takeNumber(text, isHexadecimal, 16, 2);
    } else if (text[0] == 'u') {
        text.remove_prefix(1);
        value = takeNumber(text, isHexadecimal, 16, 4);
        isByte = false;
    }
    if (!value) {
        return "unknown escape sequence";
    }
    if (isByte && *value > 0xFF) {
        return "the escape sequence is no byte";
    }
    if (*value >= 0xD800 && *value <= 0xDFFF) {
        return "a surrogate is no character";
    }
    if (isByte) {
        result += static_cast<char>(*value);
    } else {
        append(result, *value);
    }
    return nullptr;
}

} // namespace

std::optional<std::uint64_t> integerOf(std::string_view text)
{
    int base = 10;
    if (text.starts_with("0x") || text.starts_with("0X")) {
        base = 16;
        text.remove_prefix(2);
    } else if (text.size() > 1 && text[0] == '0') {
        base = 8;
    }
    std::uint64_t value = 0;
    const char* const begin =
        text.data(); // NOLINT(bugprone-suspicious-stringview-data-usage): its end goes along
    const char* const end = begin + text.size();
    const auto [rest, error] = std::from_chars(begin, end, value, base);
    return error == std::errc() && rest == end ? std::optional(value) : std::nullopt;
}

std::optional<double> floatingOf(std::string_view text)
{
    const std::string leading = (text.starts_with('.') ? "0" : "") + std::string(text);
    double value = 0;
    const char* const end = leading.data() + leading.size();
    const auto [rest, error] = std::from_chars(leading.data(), end, value);
    if (error == std::errc::result_out_of_range) {
        // Too small is 0, and a negative exponent tells it from too large.
        return leading.find('-') != std::string::npos ? std::optional(0.0) : std::nullopt;
    }
    return error == std::errc() && rest == end ? std::optional(value) : std::nullopt;
}

Unquoted unquoted(std::string_view literal)
{
    Unquoted result;
    const bool wide = literal.starts_with('L');
    literal.remove_prefix(wide ? 2 : 1);
    literal.remove_suffix(1);
    while (!literal.empty() && result.fault == nullptr) {
        if (literal.starts_with("\\\n") || literal.starts_with("\\\r\n")) {
            literal.remove_prefix(literal[1] == '\n' ? 2 : 3);
            continue;
        }
        if (literal[0] == '\\') {
            literal.remove_prefix(1);
            result.fault =
                literal.empty() ? "unknown escape sequence" : takeEscape(literal, wide, result.text);
            continue;
        }
        const std::size_t size = characterSize(literal);
        if (size == 0) {
            result.fault = "the text is not UTF-8";
            continue;
        }
        result.text += literal.substr(0, size);
        literal.remove_prefix(size);
    }
    return result;
}

} // namespace ovra::plex::idl
