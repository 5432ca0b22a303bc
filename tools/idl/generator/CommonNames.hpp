// SPDX-License-Identifier: Apache-2.0
// Names that are no keywords of C++, and yet not free.
#pragma once

#include <string_view>

namespace ovra::plex::idl
{

/// Whether headers that generated code includes define a macro of that name.
bool isMacro(std::string_view name);

/// Whether such headers declare something of that name outside of all namespaces.
bool isGlobal(std::string_view name);

} // namespace ovra::plex::idl
