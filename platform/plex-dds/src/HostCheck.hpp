// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <fastdds/dds/domain/qos/DomainParticipantQos.hpp>

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <sys/types.h>
#include <vector>

/// What of its host keeps a participant deaf.
namespace ovra::plex::hostcheck
{

using WallClock = std::chrono::system_clock;

/// What a participant needs of its host.
struct Needs {
    std::uint32_t domain = 0;
    bool usesUdp = false;
    std::uint64_t sharedMemoryBytes = 0;  ///< of its segment; 0: it uses no shared memory
    std::uint32_t firstUnicastPort = 0;   ///< that of participant 0
    std::uint32_t portsApart = 2;         ///< between the ports of two participants
    std::size_t mostPortsTried = 0;       ///< before a participant goes without
    std::uint32_t receiveBufferBytes = 0; ///< that it asks of the system for a socket; 0: as the system likes
};

Needs needsOf(std::uint32_t domain, const eprosima::fastdds::dds::DomainParticipantQos& qos);

/// A network interface with an address.
struct Interface {
    std::string name;
    std::vector<std::string> addresses; ///< of IP, as numbers
    bool isUp = false;
    bool canMulticast = false;
};

/// The interfaces of this host. @returns nothing: the system does not tell.
std::optional<std::vector<Interface>> interfacesOfHost();

/// What a host has for participants.
struct Host {
    bool canMulticast = true; ///< by an interface that is up and has an address
    bool hasSharedMemory = true;
    bool mayWriteSharedMemory = true;
    std::uint64_t freeSharedMemory = std::numeric_limits<std::uint64_t>::max(); ///< bytes
    std::map<std::uint16_t, uid_t> udpPorts;   ///< those that are bound, each with its owner
    std::set<std::uint16_t> sharedMemoryPorts; ///< those of others in the domain that go with shared memory
    uid_t user = 0;                            ///< who runs this process
    WallClock::time_point now;
};

/// Looks at this host. @param sharedMemory its directory, udpTable the kernel's table of UDP sockets.
Host lookAtHost(const Needs& needs, const std::string& sharedMemory = "/dev/shm",
                const std::string& udpTable = "/proc/net/udp");

/// Something that keeps a participant deaf.
struct Finding {
    std::string cause;   ///< the same for findings that one cure ends
    std::string problem; ///< a sentence, without its end
    std::string cure;    ///< likewise, in lower case

    std::string text() const { return problem + "; " + cure; }
};

std::vector<Finding> findings(const Needs& needs, const Host& host);

} // namespace ovra::plex::hostcheck
