// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <plex/fastdds/Generation.hpp>

#include <fastdds/dds/domain/qos/DomainParticipantQos.hpp>

#if PLEX_FASTDDS_GENERATION >= 3
#include <fastdds/rtps/transport/TCPv4TransportDescriptor.hpp>
#include <fastdds/rtps/transport/UDPv4TransportDescriptor.hpp>
#include <fastdds/rtps/transport/UDPv6TransportDescriptor.hpp>
#include <fastdds/rtps/transport/shared_mem/SharedMemTransportDescriptor.hpp>
#else
#include <fastdds/rtps/transport/TCPv4TransportDescriptor.h>
#include <fastdds/rtps/transport/UDPv4TransportDescriptor.h>
#include <fastdds/rtps/transport/UDPv6TransportDescriptor.h>
#include <fastdds/rtps/transport/shared_mem/SharedMemTransportDescriptor.h>
#endif

#include <cstdint>
#include <cstdlib>
#include <string>
#include <vector>

namespace ovra::plex::fastdds
{

/// A way in which a participant sends and receives packets.
struct Transport {
    std::string kind;                     ///< "shared memory", "UDPv4", "UDPv6", "TCP", or "another"
    std::uint32_t sharedMemoryBytes = 0;  ///< of its segment
    std::uint32_t receiveBufferBytes = 0; ///< that it asks of the system for a socket; 0: as the system likes
};

/// The variable of the environment that chooses the built-in transports of participants.
inline constexpr const char* transportsVariable = "FASTDDS_BUILTIN_TRANSPORTS";

/// What begins the names of a participant's files in shared memory.
#if PLEX_FASTDDS_GENERATION >= 3
inline constexpr const char* sharedMemoryPrefix = "fastdds_";
#else
inline constexpr const char* sharedMemoryPrefix = "fastrtps_";
#endif

/// What the environment says of the built-in transports; empty where nothing.
inline std::string transportsOfEnvironment()
{
    const char* const chosen = std::getenv(transportsVariable); // NOLINT(concurrency-mt-unsafe): read only
    return chosen == nullptr ? "" : chosen;
}

inline Transport transportOf(const eprosima::fastdds::rtps::TransportDescriptorInterface& descriptor)
{
    namespace rtps = eprosima::fastdds::rtps;
    if (const auto* const memory = dynamic_cast<const rtps::SharedMemTransportDescriptor*>(&descriptor)) {
        constexpr std::uint32_t byDefault = 512U * 1024U;
        return {"shared memory", memory->segment_size() == 0 ? byDefault : memory->segment_size()};
    }
    if (const auto* const udp = dynamic_cast<const rtps::UDPTransportDescriptor*>(&descriptor)) {
        const bool isVersion6 = dynamic_cast<const rtps::UDPv6TransportDescriptor*>(&descriptor) != nullptr;
        return {isVersion6 ? "UDPv6" : "UDPv4", 0, udp->receiveBufferSize};
    }
    const bool isTcp = dynamic_cast<const rtps::TCPTransportDescriptor*>(&descriptor) != nullptr;
    return {isTcp ? "TCP" : "another"};
}

/// The transports of a participant of this QoS, leaving aside what the environment says of built-in ones.
inline std::vector<Transport> transportsOf(const eprosima::fastdds::dds::DomainParticipantQos& qos)
{
    std::vector<Transport> transports;
    if (qos.transport().use_builtin_transports) {
        const eprosima::fastdds::rtps::SharedMemTransportDescriptor memory;
        transports = {transportOf(memory), {"UDPv4"}};
    }
    for (const auto& descriptor : qos.transport().user_transports) {
        transports.push_back(transportOf(*descriptor));
    }
    return transports;
}

} // namespace ovra::plex::fastdds
