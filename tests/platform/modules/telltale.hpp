// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <plex/Plex.hpp>

namespace telltale
{

/// The value type of the test's own module.
struct Value {
    int number;
};

} // namespace telltale
