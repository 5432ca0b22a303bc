// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <set>
#include <string>

namespace ovra::plex
{

/// Loads an XML file of QoS profiles into Fast DDS unless this process has loaded it already. Safe to call
/// from several threads at once.
/// @throws PlexException naming the file when it does not load; nothing is remembered then.
void loadProfileFileOnce(const std::string& file);

/// The names of the participants' profiles in the files that were loaded.
std::set<std::string> loadedParticipantProfiles();

} // namespace ovra::plex
