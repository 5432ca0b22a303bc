// SPDX-License-Identifier: Apache-2.0
// What is encoded in another way than a definition or other implementations have it.
#pragma once

#include "Plan.hpp"

#include <plex/idl/Diagnostics.hpp>

namespace ovra::plex::idl
{

/// Warns of sequences and arrays of enums and bitmasks, and of keys whose hash depends on the version of
/// XCDR, unless the options say which way is meant.
void warnOfDifferences(const Model& model, const Plan& plan, const GenerateOptions& options,
                       Diagnostics& diagnostics);

} // namespace ovra::plex::idl
