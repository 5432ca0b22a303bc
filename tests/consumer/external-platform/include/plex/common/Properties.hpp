// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <plex/Plex.hpp>

#include <cstdint>
#include <string>

namespace ovra::plex::util
{

std::int64_t getLongProperty(const Plex::Properties& properties, const std::string& key,
                             std::int64_t defaultValue);

} // namespace ovra::plex::util
