// SPDX-License-Identifier: Apache-2.0
// A module library that was linked without a function that it needs.
#include <plex/Export.hpp>

namespace absent
{

int function(double value); // NOLINT(misc-use-internal-linkage): it is missing on purpose

} // namespace absent

extern "C" PLEX_EXPORT int lacking();

int lacking()
{
    return absent::function(1.0);
}
