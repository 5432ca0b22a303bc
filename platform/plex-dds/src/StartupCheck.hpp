// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <fastdds/dds/domain/qos/DomainParticipantQos.hpp>

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <map>
#include <set>
#include <string>
#include <sys/types.h>
#include <vector>

/// What of its host keeps a participant deaf, looked at before it is made.
namespace ovra::plex::startup
{

using WallClock = std::chrono::system_clock;

/// What a participant needs of its host.
struct Needs {
    std::uint32_t domain = 0;
    bool usesUdp = false;
    std::uint64_t sharedMemoryBytes = 0; ///< of its segment; 0: it uses no shared memory
    std::uint32_t firstUnicastPort = 0;  ///< that of participant 0
    std::uint32_t portsApart = 2;        ///< between the ports of two participants
    std::size_t mostPortsTried = 0;      ///< before a participant goes without
};

Needs needsOf(std::uint32_t domain, const eprosima::fastdds::dds::DomainParticipantQos& qos);

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

/// Something that keeps a participant deaf, with the cure.
struct Finding {
    std::string cause; ///< the same for findings that one cure ends
    std::string text;
};

std::vector<Finding> findings(const Needs& needs, const Host& host);

/// Logs findings at WARN under "plexDdsDiscovery", but for those whose cause this process has logged already.
void record(const std::vector<Finding>& findings);

/// Looks, once a process and domain, at what a participant of this QoS will meet, and records it.
void checkOnce(std::uint32_t domain, const eprosima::fastdds::dds::DomainParticipantQos& qos);

} // namespace ovra::plex::startup
