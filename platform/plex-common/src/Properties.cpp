// SPDX-License-Identifier: Apache-2.0
#include <plex/common/Properties.hpp>

#include <charconv>

namespace ovra::plex::util
{

std::optional<std::string> findProperty(const Plex::Properties& properties, const std::string& key)
{
    const auto found = properties.find(key);
    return found == properties.end() ? std::nullopt : std::optional(found->second);
}

std::int64_t getLongProperty(const Plex::Properties& properties, const std::string& key,
                             std::int64_t defaultValue)
{
    const auto text = findProperty(properties, key);
    if (!text) {
        return defaultValue;
    }
    std::int64_t value = 0;
    const char* const end = text->data() + text->size();
    const auto [rest, error] = std::from_chars(text->data(), end, value);
    if (error == std::errc::invalid_argument || rest != end) {
        throw PlexException("Property " + key + " is not a whole number: \"" + *text + "\"");
    }
    if (error == std::errc::result_out_of_range) {
        throw PlexException("Property " + key + " is out of range: \"" + *text + "\"");
    }
    return value;
}

} // namespace ovra::plex::util
