// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>
#include <string_view>

namespace ovra::plex::idl
{

/// What a documentation comment says: without its marks, the stars that lines begin with and the space around
/// it.
std::string documentationOf(std::string_view comment);

} // namespace ovra::plex::idl
