// SPDX-License-Identifier: Apache-2.0
// A module library without factories.
#include <plex/Export.hpp>

extern "C" PLEX_EXPORT int hollow();

int hollow()
{
    return 7;
}
