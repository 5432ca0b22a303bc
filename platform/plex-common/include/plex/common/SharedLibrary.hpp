// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <plex/Export.hpp>

#include <string>
#include <vector>

namespace ovra::plex
{

/// A symbol of a library that is opened at run time.
///
/// The library stays loaded until the process ends: objects that it made may still be in use, and its code
/// may be on the stack of other threads. Opening it again costs nothing.
struct LibrarySymbol {
    std::string library; ///< file name, for example "libplex-dds-vexstubif.so"
    std::string symbol;  ///< unmangled name
};

/// Opens the library and finds the function in it.
///
/// @param directories tried first, in order; then the dynamic loader's own search path.
/// @throws PlexException naming the library, the symbol and the loader's own words.
PLEX_EXPORT void (*loadFunction(const LibrarySymbol& wanted, const std::vector<std::string>& directories))();

} // namespace ovra::plex
