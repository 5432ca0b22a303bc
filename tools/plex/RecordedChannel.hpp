// SPDX-License-Identifier: Apache-2.0
// What a recording says of a writer: of what type its values were, and what it has offered.
#pragma once

#include "Description.hpp"
#include "TypeSource.hpp"

#include <plex/mcap/Records.hpp>

#include <optional>
#include <string>
#include <vector>

namespace ovra::plex::tool
{

/// The channel of a writer. @param type null: unknown.
mcap::Channel channelOf(const Scene& scene, const fastdds::AnnouncedEndpoint& writer, const KnownType* type);

/// The definition of a type, which stands alone.
mcap::Schema schemaOf(const KnownType& type);

/// What is needed to publish the values of a channel again.
struct Replayable {
    std::string type; ///< its name in DDS
    bool keyed = false;
    bool isXcdr2 = false;
    fastdds::AnnouncedEndpoint suited; ///< a reader that asks for just what was offered
    std::optional<KnownType> known;    ///< for keys: of those that have one
};

/// @param schema null: none.
/// @param options where types are looked for that the recording does not describe.
/// @throws Failure where a channel can not be published again: why.
Replayable replayableOf(const mcap::Channel& channel, const mcap::Schema* schema, const TypeOptions& options);

} // namespace ovra::plex::tool
