// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "Table.hpp"

namespace plex::test::callbacks
{

/// Asks for something inside a callback and looks at what comes of it, now and after all has gone. What takes
/// too long ends the process.
/// @returns the exit code; what is wrong is on standard error.
int runPair(const Pair& pair);

} // namespace plex::test::callbacks
