// SPDX-License-Identifier: Apache-2.0
// What is wrong with a host and a domain, from what was seen of them.
#pragma once

#include "Domain.hpp"
#include "HostNetwork.hpp"
#include "Leftovers.hpp"

#include <cstdint>
#include <optional>
#include <platform/plex-dds/src/HostCheck.hpp>
#include <string>
#include <vector>

namespace ovra::plex::tool
{

/// Something that is wrong.
struct Problem {
    std::string area; ///< in a word or two: "multicast"
    std::string text;
    std::string cure;
};

/// What was seen of this host.
struct Machine {
    hostcheck::Needs needs; ///< of a participant
    hostcheck::Host host;
    std::vector<hostcheck::Interface> interfaces;
    std::vector<std::string> deafInterfaces; ///< by which multicast does not come back
    std::vector<SharedFiles> leftovers;
    SocketBuffers buffers;
    std::uint64_t dropped = 0; ///< packets, while it was looked at
};

/// An implementation of DDS on the air.
struct Implementation {
    std::string vendor;
    std::string version;            ///< "3.1.2"; "2" of a Fast DDS that tells none; empty: unknown
    std::vector<std::string> hosts; ///< each once
    std::size_t participants = 0;

    std::string name() const { return version.empty() ? vendor : vendor + " " + version; }
};

/// Those of all participants, by name.
std::vector<Implementation> implementationsOf(const Scene& scene);

std::vector<Problem> problemsOf(const Machine& machine);

/// Generations of Fast DDS that do not share memory, and every pair of a writer and a reader that is not
/// matched.
std::vector<Problem> problemsOf(const Scene& scene);

} // namespace ovra::plex::tool
