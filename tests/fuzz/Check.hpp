// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdlib>
#include <iostream>
#include <source_location>
#include <string_view>

namespace plex::fuzz
{

/// Ends the process where a property does not hold, which a fuzzer reports together with its input.
inline void check(bool holds, std::string_view property,
                  const std::source_location& place = std::source_location::current())
{
    if (!holds) {
        std::cerr << place.file_name() << ':' << place.line() << ": does not hold: " << property << std::endl;
        std::abort();
    }
}

} // namespace plex::fuzz
