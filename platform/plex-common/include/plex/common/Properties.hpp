// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <plex/Export.hpp>
#include <plex/Plex.hpp>

#include <cstdint>
#include <optional>
#include <string>

namespace ovra::plex::util
{

/// The value of a property, or nothing where it is absent.
PLEX_EXPORT std::optional<std::string> findProperty(const Plex::Properties& properties,
                                                    const std::string& key);

/// A whole decimal number (an optional minus sign and digits, nothing else) among the properties.
/// @throws PlexException naming key and value when the value is not such a number or does not fit 64 bits.
PLEX_EXPORT std::int64_t getLongProperty(const Plex::Properties& properties, const std::string& key,
                                         std::int64_t defaultValue);

} // namespace ovra::plex::util
