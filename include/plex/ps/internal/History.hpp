// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <plex/Export.hpp>
#include <plex/dds/Status.hpp>
#include <plex/ps/internal/Entities.hpp>

namespace ovra::plex::ps::internal
{

/// What DDS keeps for a reader or writer. It does not tell how many samples a writer holds.
PLEX_EXPORT History historyOf(const dds::DataReader& reader);
PLEX_EXPORT History historyOf(const dds::DataWriter& writer);

} // namespace ovra::plex::ps::internal
