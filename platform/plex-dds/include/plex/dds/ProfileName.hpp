// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <plex/Export.hpp>
#include <plex/Plex.hpp>

#include <cstdint>
#include <string>

namespace ovra::plex
{

/// What a QoS profile is for.
enum class ProfileType : std::int32_t {
    Participant = 0,
    Topic = 1,
    Writer = 2,
    Publisher = 3,
    Reader = 4,
    Subscriber = 5
};

/// The name of the QoS profile for one kind of DDS entity: the property "dds.qos.profile.<kind>" where it
/// is present, else "<library>.<kind>" with the library of property "dds.qos.profile.library"; <kind> is
/// "participant", "topic", "writer", "publisher", "reader" or "subscriber".
/// @throws PlexException when the type is none of the enumerators.
PLEX_EXPORT std::string getProfileNameByProfileType(ProfileType type, const Plex::Properties& properties);

} // namespace ovra::plex
