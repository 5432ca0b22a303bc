// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>
#include <vector>

namespace plex::test
{

/// What a process of Cyclone DDS runs under: it needs no more than the loopback interface.
/// @param more settings of the domain.
inline std::vector<std::string> peerEnvironment(const std::string& more = "")
{
    return {"CYCLONEDDS_URI=<Domain><General>"
            "<Interfaces><NetworkInterface address='127.0.0.1' multicast='false'/></Interfaces>"
            "<AllowMulticast>false</AllowMulticast></General>"
            "<Discovery><ParticipantIndex>auto</ParticipantIndex>"
            "<MaxAutoParticipantIndex>30</MaxAutoParticipantIndex>"
            "<Peers><Peer address='127.0.0.1'/></Peers></Discovery>" +
            more +
            "<Tracing><Verbosity>warning</Verbosity><OutputFile>stdout</OutputFile></Tracing></Domain>"};
}

} // namespace plex::test
