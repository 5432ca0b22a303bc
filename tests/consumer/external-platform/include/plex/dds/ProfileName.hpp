// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <plex/Plex.hpp>

#include <cstdint>
#include <string>

namespace ovra::plex
{

enum class ProfileType : std::int32_t { Participant, Topic, Writer, Publisher, Reader, Subscriber };

std::string getProfileNameByProfileType(ProfileType type, const Plex::Properties& properties);

} // namespace ovra::plex
