// SPDX-License-Identifier: Apache-2.0
#include "Check.hpp"
#include "Target.hpp"

#include <plex/common/Properties.hpp>
#include <plex/dds/DdsUriHelper.hpp>
#include <plex/dds/ProfileName.hpp>

#include <algorithm>
#include <cstring>
#include <optional>
#include <string>
#include <string_view>

namespace plex::fuzz
{

namespace
{

using ovra::plex::Plex;

constexpr const char* kinds[] = {"participant", "topic", "writer", "publisher", "reader", "subscriber"};

bool isDigits(std::string_view text)
{
    return !text.empty() && std::ranges::all_of(text, [](char c) { return c >= '0' && c <= '9'; });
}

/// A whole decimal number as sign and digits, which have no bound.
struct Whole {
    bool negative;
    std::string digits; ///< without leading zeros

    static std::optional<Whole> of(std::string_view text)
    {
        const bool negative = text.starts_with('-');
        text.remove_prefix(negative ? 1 : 0);
        if (!isDigits(text)) {
            return std::nullopt;
        }
        text.remove_prefix(std::min(text.find_first_not_of('0'), text.size()));
        return Whole{negative, std::string(text)};
    }

    bool fits(std::string_view least, std::string_view most) const
    {
        const std::string_view bound = negative ? least : most;
        return digits.size() < bound.size() || (digits.size() == bound.size() && digits <= bound);
    }

    /// Of a number that fits.
    std::int64_t value() const
    {
        std::int64_t result = 0;
        for (const char digit : digits) {
            const std::int64_t figure = digit - '0';
            result = result * 10 + (negative ? -figure : figure);
        }
        return result;
    }
};

/// Whether an operation gives a text or refuses with it; any other exception ends the process.
template <class Operation>
bool endsWith(const std::string& expected, Operation operation)
{
    try {
        return operation() == expected;
    } catch (const ovra::plex::PlexException& error) {
        return std::strcmp(error.what(), expected.c_str()) == 0; // up to a NUL in it
    }
}

void checkLong(const std::string& text)
{
    const auto number = Whole::of(text);
    std::string expected = "Property key is not a whole number: \"" + text + "\"";
    if (number) {
        expected = number->fits("9223372036854775808", "9223372036854775807")
                       ? std::to_string(number->value())
                       : "Property key is out of range: \"" + text + "\"";
    }
    const auto read = [&] {
        return std::to_string(ovra::plex::util::getLongProperty({{"key", text}}, "key", 42));
    };
    check(endsWith(expected, read), "a number is read as what it says");
}

void checkDomain(const std::string& text)
{
    static const ovra::plex::Uri uri("dds+ps:///topic");
    const auto number = Whole::of(text);
    const bool good = number && !text.starts_with('-') && number->fits("", "232");
    const std::string expected =
        good ? std::to_string(number->value())
             : "Property dds.domain is not a whole number from 0 to 232: \"" + text + "\"";
    const auto read = [&] {
        return std::to_string(ovra::plex::DdsUriHelper::domain(uri, {{"dds.domain", text}}));
    };
    check(endsWith(expected, read), "a domain is read as what it says");
}

/// One property a line, the key before the first '='.
Plex::Properties propertiesOf(std::string_view text)
{
    Plex::Properties properties;
    while (!text.empty()) {
        const auto line = text.substr(0, text.find('\n'));
        const auto separator = std::min(line.find('='), line.size());
        properties[std::string(line.substr(0, separator))] =
            line.substr(std::min(separator + 1, line.size()));
        text.remove_prefix(std::min(line.size() + 1, text.size()));
    }
    return properties;
}

void checkProfileNames(const Plex::Properties& properties)
{
    const auto valueOf = [&](const std::string& key) {
        const auto found = properties.find(key);
        return found == properties.end() ? std::nullopt : std::optional(found->second);
    };
    const auto library = valueOf("dds.qos.profile.library").value_or("");
    std::int32_t type = 0;
    for (const std::string kind : kinds) {
        const auto name =
            ovra::plex::getProfileNameByProfileType(static_cast<ovra::plex::ProfileType>(type++), properties);
        check(name == valueOf("dds.qos.profile." + kind).value_or(library + "." + kind),
              "a profile is named by its own property or by library and kind");
    }
}

} // namespace

void run(std::span<const std::uint8_t> input)
{
    const std::string text(input.begin(), input.end());
    checkLong(text);
    checkDomain(text);
    checkProfileNames(propertiesOf(text));
}

} // namespace plex::fuzz
